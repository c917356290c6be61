# Rscript accuracy.R PROGRAM SIMULATOR SETS: the mean number of splits missed and the mean processor seconds of
# models and methods on simulated alignments, beside ape's distance methods on the same tn93 distances and
# FastTree's likelihood. Times of ape are those of the method alone, all others of the whole program.
suppressMessages(library(ape))
arguments <- commandArgs(TRUE)
program <- arguments[1]
simulator <- arguments[2]
sets <- as.integer(arguments[3])
cases <- list(c(50, 500, 0.5), c(100, 600, 0.3), c(100, 600, 1), c(200, 1000, 0.5))
common <- "x.fa --drop-undefined --threads 1 --quiet --newick n --output o --log l --distances d --model"
ours <- c(
  "spectral" = "spectral", "p" = "p", "jc69" = "jc69", "k80" = "k80", "f84" = "f84", "tn93" = "tn93",
  "tn93, gamma 0.6" = "tn93 --gamma 0.6", "logdet" = "logdet",
  "tn93, ols" = "tn93 --criterion ols", "tn93, neighbour joining" = "tn93 --search none")

splits_missed <- function(tree, truth) dist.topo(unroot(tree), truth) / 2

seconds_of <- function(command) {
  time <- system.time(system(command, ignore.stdout = TRUE, ignore.stderr = TRUE))
  time[["user.child"]] + time[["sys.child"]]
}

one_set <- function() {
  truth <- unroot(read.tree("x.nwk"))
  row <- list()
  for (name in names(ours)) {
    seconds <- seconds_of(paste(program, common, ours[[name]]))
    row[[name]] <- c(splits_missed(read.tree("n"), truth), seconds)
    if (name == "tn93") distances <- as.matrix(read.table("d", skip = 1, row.names = 1))
  }
  colnames(distances) <- rownames(distances)
  for (name in c("nj", "bionj", "fastme.bal")) {
    time <- system.time(tree <- get(name)(as.dist(distances)))
    row[[paste0("ape's ", name, ", tn93")]] <- c(splits_missed(tree, truth), time[["user.self"]] + time[["sys.self"]])
  }
  seconds <- seconds_of("(OMP_NUM_THREADS=1 fasttree -nt -gtr -quiet x.fa > f)")
  row[["FastTree -gtr"]] <- c(splits_missed(read.tree("f"), truth), seconds)
  row
}

table <- NULL
for (case in cases) {
  results <- lapply(seq_len(sets), function(seed) {
    system(paste(simulator, paste(case, collapse = " "), seed, "x"))
    do.call(rbind, one_set())
  })
  mean <- Reduce(`+`, results) / sets
  table <- cbind(table, sprintf("%.1f, %.3f s", mean[, 1], mean[, 2]))
  rownames(table) <- rownames(mean)
}
cat("| taxa / sites / height |", paste(sapply(cases, paste, collapse = " / "), collapse = " | "), "|\n")
cat("|---|", rep("---|", length(cases)), "\n", sep = "")
for (name in rownames(table)) cat("|", name, "|", paste(table[name, ], collapse = " | "), "|\n")
