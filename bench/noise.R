# Rscript noise.R KIND TAXA SEED FILE: a PHYLIP square matrix far from any tree's. KIND is "stochastic"
# (uniform, symmetrised, zero diagonal, scaled to row sums of 1 by Sinkhorn's method) or "integers" (uniform
# from 1 to 10).
arguments <- commandArgs(TRUE)
taxa <- as.integer(arguments[2])
set.seed(as.integer(arguments[3]))
if (arguments[1] == "integers") {
  distances <- matrix(sample(10, taxa^2, TRUE), taxa)
  distances[lower.tri(distances)] <- t(distances)[lower.tri(distances)]
  diag(distances) <- 0
} else {
  distances <- matrix(runif(taxa^2), taxa)
  distances <- distances + t(distances)
  diag(distances) <- 0
  for (step in 1:1000) {
    scale <- 1 / sqrt(rowSums(distances))
    distances <- distances * outer(scale, scale)
  }
}
cat(taxa, "\n", file = arguments[4])
write.table(format(distances, digits = 17), arguments[4], append = TRUE, quote = FALSE,
            col.names = FALSE)
