"""Labels that are hard on readers of trees, and the comparison of what the readers make of them.

readers.py data: writes alignments with these labels, and the outgroup of each.
readers.py compare DATA FILE: reads the trees of FILE with ape, DendroPy and Biopython, and ends with
status 1 unless all have the labels of DATA and the same lengths and supports on the same splits.
"""
import io
import os
import random
import subprocess
import sys

DATA = {  # file: labels, outgroup
    "headers.fasta": ([
        "hCoV-19/England/PHEC-L304L78C/2021|EPI_ISL_1234567|2021-03-04", "NC_045512.2",
        "gi|9626243|ref|NC_001416.1|", "lcl|ORF1:c100-1", "A/Hong_Kong/4801/2014_(H3N2)", "x:y", "{d}",
        "e=f", "12", "1e5", "-7", "a*b+c", "back\\slash", "`tick`", "<tag>&amp", "#hash%20", "~home",
        "Müller_å", "漢字", "L" + "0123456789" * 30, "_", "a__b", "plain"], "12,plain"),
    "blanks.nex": ([
        "Homo sapiens", "Mus musculus (house)", "a_b c", "x: y", "Felis  catus", "Canis lupus"],
        "Homo_sapiens"),
    "signs.nex": ([
        "NC_045512.2 Wuhan-Hu-1, complete genome", "Felis catus [1]", "[c]", "a;b", "a,b", 'g"h',
        "plain"], "plain"),
    "quotes.fasta": (["it's", "5'-end", "''", "a'b'c", "plain"], "plain"),
}


def readable(reader, schema, labels):
    """Whether a reader knows all signs in these labels, in whatever way they are written.

    Of ape 5.7, DendroPy 4.5 and Biopython 1.80 only DendroPy knows a quote that is doubled, and ape's
    TRANSLATE table drops what is in brackets, and commas, semicolons and double quotes.
    """
    signs = frozenset("".join(labels))
    if reader == "DendroPy":
        return True
    if reader == "ape" and schema == "nexus" and signs & frozenset("[];,\""):
        return False
    return "'" not in signs


def sequences(count):
    """Sites that evolve along a random tree, so that supports differ."""
    generator = random.Random(1)
    lines = [[generator.choice("ACGT") for _ in range(400)]]
    while len(lines) < count:
        child = list(generator.choice(lines))
        for line in (child, lines[generator.randrange(len(lines))]):
            for _ in range(12):
                line[generator.randrange(len(line))] = generator.choice("ACGT")
        lines.append(child)
    return ["".join(line) for line in lines]


def write_data():
    for name, (labels, outgroup) in DATA.items():
        rows = list(zip(labels, sequences(len(labels))))
        with open(name, "w", encoding="utf-8") as file:
            if name.endswith(".fasta"):
                file.writelines(f">{label}\n{line}\n" for label, line in rows)
            else:
                matrix = "\n".join(f"'{label}' {line}" for label, line in rows)
                file.write(f"#NEXUS\nBEGIN DATA;\nDIMENSIONS NTAX={len(labels)} NCHAR=400;\n"
                           f"FORMAT DATATYPE=DNA;\nMATRIX\n{matrix}\n;\nEND;\n")
        with open(name + ".outgroup", "w", encoding="utf-8") as file:
            file.write(outgroup)


def plain(label):
    """A label in the one form in which the readers are compared: no quotes around it, no blanks."""
    if len(label) > 1 and label[0] == label[-1] == "'":
        label = label[1:-1].replace("''", "'")
    return label.replace(" ", "_")


def keyed(edges):
    """Edges as (taxa below, length, support), by taxa; supports as numbers."""
    return {frozenset(map(plain, taxa)): (float(length), float(support) if support else None)
            for taxa, length, support in edges}


def ape_trees(path):
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "readers.R")
    printed = subprocess.run(["Rscript", script, path], check=True, capture_output=True)
    trees = {}
    for line in printed.stdout.decode().splitlines():
        number, length, support, *taxa = line.split("\t")
        trees.setdefault(number, []).append((taxa, length, support))
    return [keyed(edges) for edges in trees.values()]


def dendropy_trees(text, schema):
    import dendropy
    trees = dendropy.TreeList.get(data=text, schema=schema, preserve_underscores=True,
                                  suppress_internal_node_taxa=True)
    return [keyed(([leaf.taxon.label for leaf in node.leaf_iter()], node.edge_length, node.label)
                  for node in tree.preorder_node_iter() if node.parent_node is not None)
            for tree in trees]


def biopython_trees(text, schema):
    from Bio import Phylo
    return [keyed(([leaf.name for leaf in clade.get_terminals()], clade.branch_length,
                   "" if clade.is_terminal() else clade.confidence)
                  for clade in tree.find_clades() if clade is not tree.root)
            for tree in Phylo.parse(io.StringIO(text), schema)]


def compare(data, path):
    labels = DATA[data][0]
    with open(path, encoding="utf-8") as file:
        text = file.read()
    schema = "nexus" if text.startswith("#NEXUS") else "newick"
    readers = {"DendroPy": lambda: dendropy_trees(text, schema), "ape": lambda: ape_trees(path),
               "Biopython": lambda: biopython_trees(text, schema)}
    read = {name: trees() for name, trees in readers.items() if readable(name, schema, labels)}
    wanted = frozenset(map(plain, labels))
    right = all(trees == read["DendroPy"] and all(frozenset().union(*tree) == wanted for tree in trees)
                for trees in read.values())
    supports = sum(edge[1] is not None for tree in read["DendroPy"] for edge in tree.values())
    print(f"{data} {path}: {len(read['DendroPy'])} trees, {supports} supports,",
          ("the same to " if right else "NOT the same to ") + ", ".join(read))
    return not right


if __name__ == "__main__":
    if sys.argv[1] == "data":
        write_data()
    else:
        sys.exit(compare(*sys.argv[2:]))
