# Rscript ape_distances.R PROGRAM [NEXUS_FILE...]: what bench/ape_distances.sh says, in a folder of its own.
suppressMessages(library(ape))
program <- commandArgs(TRUE)[1]
tolerance <- 1e-9
bad <- FALSE

# Our models, as options, and the arguments of dist.dna that mean the same.
models <- list(
  "p" = list(model = "raw"), "jc69" = list(model = "JC69"), "k80" = list(model = "K80"),
  "f81" = list(model = "F81"), "f84" = list(model = "F84"), "tn93" = list(model = "TN93"),
  "jc69 --gamma 0.5" = list(model = "JC69", gamma = 0.5),
  "k80 --gamma 0.5" = list(model = "K80", gamma = 0.5),
  "f81 --gamma 2" = list(model = "F81", gamma = 2),
  "tn93 --gamma 0.5" = list(model = "TN93", gamma = 0.5))
paralinear <- list("logdet" = list(model = "paralin"))

# A matrix of letters, a taxon a row. ape's reader refuses blanks within a sequence.
read_letters <- function(path) {
  lines <- readLines(path)
  from <- grep("^[[:blank:]]*matrix[[:blank:]]*$", lines, ignore.case = TRUE)[1]
  to <- from + grep(";", lines[-(1:from)], fixed = TRUE)[1] - 1
  rows <- (from + 1):to
  lines[rows] <- gsub("\\[[^]]*\\]", "", lines[rows])
  lines[rows] <- sub("^[[:blank:]]*('[^']*'|[^[:blank:]]+)[[:blank:]]+", "\\1\t", lines[rows])
  parts <- strsplit(lines[rows], "\t")
  lines[rows] <- vapply(parts, function(part)
    if (length(part) < 2) "" else paste(part[1], gsub("[[:blank:]]", "", paste(part[-1], collapse = ""))), "")
  lines[rows[lines[rows] != "" & rows == to]] <- lines[to]
  writeLines(lines, "plain.nex")
  letters <- do.call(rbind, read.nexus.data("plain.nex"))
  letters[letters == "u"] <- "t"
  letters[letters == "x"] <- "n"
  letters
}

# Sequences down a random tree with more A and T and more transitions; some cells gaps or ambiguity codes.
simulated <- function(taxa, sites, depth, seed) {
  set.seed(seed)
  bases <- c("a", "c", "g", "t")
  shares <- c(0.35, 0.15, 0.15, 0.35)
  tree <- reorder(rtree(taxa, br = function(k) rexp(k, 1 / depth)), "cladewise")
  rows <- matrix("", 2 * taxa - 1, sites)
  rows[taxa + 1, ] <- sample(bases, sites, TRUE, shares)
  partner <- c(a = "g", g = "a", c = "t", t = "c")
  for (edge in seq_len(nrow(tree$edge))) {
    row <- rows[tree$edge[edge, 1], ]
    changed <- runif(sites) < 1 - exp(-tree$edge.length[edge])
    swap <- changed & runif(sites) < 0.6
    anew <- changed & !swap
    row[swap] <- partner[row[swap]]
    row[anew] <- sample(bases, sum(anew), TRUE, shares)
    rows[tree$edge[edge, 2], ] <- row
  }
  letters <- rows[1:taxa, ]
  holes <- matrix(runif(taxa * sites) < 0.1, taxa)
  letters[holes] <- sample(c("-", "?", "n", "r", "y", "k", "v"), sum(holes), TRUE)
  rownames(letters) <- paste0("t", 1:taxa)
  letters
}

# Prints the largest difference of each model on one alignment.
compare <- function(name, letters, models) {
  write.dna(as.DNAbin(letters), "x.fa", format = "fasta", colsep = "")
  lines <- readLines("x.fa")
  for (model in names(models)) {
    told <- system(paste(program, "x.fa --drop-undefined --search none --distances d --output o --log l",
                         "--model", model), intern = TRUE)
    ours <- as.matrix(read.table("d", skip = 1, row.names = 1))
    kept <- as.DNAbin(letters)[rownames(ours), ]
    theirs <- do.call(dist.dna, c(list(kept, pairwise.deletion = TRUE, as.matrix = TRUE), models[[model]]))
    # Which pairs are too far apart, ape shows without gamma only, where it raises no negative number to a
    # power; and where a logarithm's argument is 0, rounding gives it distances of 8 and more.
    plain <- dist.dna(kept, models[[model]]$model, pairwise.deletion = TRUE, as.matrix = TRUE)
    upper <- upper.tri(ours)
    finite <- is.finite(plain[upper]) & plain[upper] < 8
    largest <- max((abs(ours - theirs) / pmax(theirs, 1))[upper][finite], 0)
    saturated <- sum(as.integer(sub("saturated +([0-9]+).*", "\\1", grep("^saturated", told, value = TRUE))))
    wrong <- largest > tolerance || saturated != sum(!finite)
    bad <<- bad || wrong
    cat(sprintf("%-34s %-18s %6d pairs %5d too far %9.2g%s\n", name, model, sum(upper), saturated, largest,
                if (wrong) sprintf("  WRONG (ape: %d too far)", sum(!finite)) else ""))
  }
}

gap_free <- function(letters) letters[, apply(letters, 2, function(column) all(column %in% c("a", "c", "g", "t")))]

for (depth in c(0.02, 0.1, 0.4)) {
  letters <- simulated(60, 400, depth, 7)
  compare(sprintf("simulated, mean edge %g", depth), letters, models)
  letters[!letters %in% c("a", "c", "g", "t")] <- "a"
  compare("  without gaps", letters, paralinear)
}
for (path in commandArgs(TRUE)[-1]) {
  letters <- read_letters(path)
  compare(basename(path), letters, models)
  if (ncol(gap_free(letters)) > 100) compare("  without gaps", gap_free(letters), paralinear)
}
if (bad) quit(status = 1)
