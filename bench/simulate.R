# Rscript simulate.R TAXA SITES SEED FILE [TREE]: sequences evolved by the Jukes-Cantor model along a random
# tree (exponential edge lengths, mean 0.05), and their Jukes-Cantor distances as a PHYLIP square matrix;
# the tree itself goes to TREE.
suppressMessages(library(ape))
arguments <- commandArgs(TRUE)
taxa <- as.integer(arguments[1])
sites <- as.integer(arguments[2])
set.seed(as.integer(arguments[3]))

tree <- reorder(rtree(taxa, br = function(k) rexp(k, 20)), "cladewise")
sequences <- matrix(0L, 2 * taxa - 1, sites)
sequences[taxa + 1, ] <- sample(0:3, sites, TRUE)
for (edge in seq_len(nrow(tree$edge))) {
  sequence <- sequences[tree$edge[edge, 1], ]
  changed <- runif(sites) < 0.75 * (1 - exp(-4 / 3 * tree$edge.length[edge]))
  sequence[changed] <- (sequence[changed] + sample(1:3, sum(changed), TRUE)) %% 4L
  sequences[tree$edge[edge, 2], ] <- sequence
}
letters <- matrix(c("a", "c", "g", "t")[sequences[1:taxa, ] + 1], taxa, sites)
rownames(letters) <- paste0("t", 1:taxa)
distances <- dist.dna(as.DNAbin(letters), "JC69", as.matrix = TRUE)
distances[!is.finite(distances)] <- 3
cat(taxa, "\n", file = arguments[4])
write.table(format(distances, digits = 17), arguments[4], append = TRUE, quote = FALSE,
            col.names = FALSE)
tree$tip.label <- rownames(letters)
if (length(arguments) > 4) write.tree(unroot(tree), arguments[5])
