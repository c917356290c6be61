# Rscript stand_in.R PROGRAM SIMULATOR: which number should stand for the distance of a pair that is too far
# apart for its model? Prints, for deep simulated trees, the mean number of splits missed with multiples of
# the largest finite distance, and with one that is larger than any.
suppressMessages(library(ape))
program <- commandArgs(TRUE)[1]
simulator <- commandArgs(TRUE)[2]
sets <- 12
factors <- c(0.7, 0.85, 1, 1.25, 1.5, 2, 5)

splits_missed <- function(path, truth) dist.topo(unroot(read.tree(path)), truth) / 2

tree_of <- function(distances) {
  cat(nrow(distances), "\n", file = "m")
  write.table(format(distances, digits = 17), "m", append = TRUE, quote = FALSE, col.names = FALSE)
  system(paste(program, "--matrix m --quiet --threads 1 --newick n --output o --log l"))
  "n"
}

cat("| taxa | sites | height | model | pairs too far, % |", paste0(factors, " x |"), "10 |\n")
cat("|---|---|---|---|---|", rep("---|", length(factors) + 1), "\n", sep = "")
for (case in list(c(60, 500, 1.5), c(60, 500, 2.5), c(150, 300, 1.5), c(60, 1500, 3))) {
  for (model in c("jc69", "tn93", "logdet")) {
    missed <- NULL
    share <- NULL
    for (seed in seq_len(sets)) {
      system(paste(simulator, paste(case, collapse = " "), seed, "x"))
      told <- system(paste(program, "x.fa --drop-undefined --search none --distances d --output o --log l",
                           "--threads 1 --model", model), intern = TRUE)
      line <- grep("^saturated", told, value = TRUE)
      distances <- as.matrix(read.table("d", skip = 1, row.names = 1))
      colnames(distances) <- rownames(distances)
      if (length(line) == 0) next
      stand_in <- as.numeric(sub(".*set to ([^;]*);.*", "\\1", line))
      largest <- as.numeric(sub(".*distance is ([^;]*).*", "\\1", line))
      far <- abs(distances - stand_in) < 1e-9 * stand_in
      truth <- unroot(keep.tip(read.tree("x.nwk"), rownames(distances)))
      share <- c(share, mean(far[upper.tri(far)]))
      missed <- rbind(missed, sapply(c(factors * largest, 10), function(value) {
        distances[far] <- value
        if (value < largest) distances <- pmin(distances, value)
        splits_missed(tree_of(distances), truth)
      }))
    }
    if (is.null(missed)) next
    cat("|", paste(case, collapse = " | "), "|", model, "|", sprintf("%.1f", 100 * mean(share)), "|",
        paste(sprintf("%.2f |", colMeans(missed))), "\n")
  }
}
