# Rscript peers.R MATRIX METHOD TREE: one of ape's distance methods on a PHYLIP square matrix. Writes the
# tree in Newick's format and prints the processor seconds of the method alone.
suppressMessages(library(ape))
arguments <- commandArgs(TRUE)
distances <- as.dist(as.matrix(read.table(arguments[1], skip = 1, row.names = 1)))
methods <- list(nj = nj, bionj = bionj, fastme.ols = fastme.ols,
                fastme.nni = function(d) fastme.bal(d, nni = TRUE, spr = FALSE, tbr = FALSE),
                fastme.spr = function(d) fastme.bal(d, nni = TRUE, spr = TRUE, tbr = FALSE))
time <- system.time(tree <- methods[[arguments[2]]](distances))
write.tree(unroot(tree), arguments[3])
cat(time[["user.self"]] + time[["sys.self"]], "\n")
