# Rscript peers.R MATRIX: the trees of ape's distance methods for a PHYLIP square matrix. Writes each to
# MATRIX.NAME.nwk and prints its name and the processor seconds of the method alone.
suppressMessages(library(ape))
path <- commandArgs(TRUE)[1]
distances <- as.dist(as.matrix(read.table(path, skip = 1, row.names = 1)))
methods <- list(nj = nj, bionj = bionj, fastme.ols = fastme.ols, fastme.bal = fastme.bal)
for (name in names(methods)) {
  time <- system.time(tree <- methods[[name]](distances))
  write.tree(unroot(tree), paste0(path, ".", name, ".nwk"))
  cat(name, time[["user.self"]] + time[["sys.self"]], "\n")
}
