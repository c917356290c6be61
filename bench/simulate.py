"""simulate.py FOLDER COUNT TAXA SITES: random alignments, FASTA, for tests and benchmarks."""

import os
import random
import sys


def alignment(generator, taxa, sites, share=0.05):
    """Sequences that descend from one: random ones split in two, and `share` of the sites changes."""
    sequences = [[generator.choice("ACGT") for _ in range(sites)]]
    while len(sequences) < taxa:
        sequence = sequences.pop(generator.randrange(len(sequences)))
        for _ in range(2):
            child = list(sequence)
            for _ in range(generator.randint(1, int(2 * share * sites))):
                child[generator.randrange(sites)] = generator.choice("ACGT")
            sequences.append(child)
    return ["".join(sequence) for sequence in sequences]


def write(folder, count, taxa, sites):
    generator = random.Random(1)
    os.makedirs(folder, exist_ok=True)
    for k in range(count):
        with open(os.path.join(folder, f"gene{k:04d}.fasta"), "w", encoding="utf-8") as file:
            for i, sequence in enumerate(alignment(generator, taxa, sites)):
                file.write(f">taxon_{i}\n{sequence}\n")


if __name__ == "__main__":
    write(sys.argv[1], *(int(number) for number in sys.argv[2:]))
