# The edges of every tree of a file as ape reads it, a line each: the number of the tree, the length, the
# label of the node below, and the labels of the taxa below. A tab between each two.
suppressMessages(library(ape))
file <- commandArgs(TRUE)[1]
nexus <- grepl("^#NEXUS", readLines(file, 1))
trees <- if (nexus) read.nexus(file) else read.tree(file)
if (inherits(trees, "phylo")) trees <- list(trees)
for (k in seq_along(trees)) {
  tree <- trees[[k]]
  tips <- length(tree$tip.label)
  below <- prop.part(tree)
  for (e in seq_len(nrow(tree$edge))) {
    node <- tree$edge[e, 2]
    support <- if (node > tips && !is.null(tree$node.label)) tree$node.label[node - tips] else ""
    taxa <- if (node > tips) below[[node - tips]] else node
    cat(k, sprintf("%.17g", tree$edge.length[e]), support, tree$tip.label[taxa], sep = "\t")
    cat("\n")
  }
}
