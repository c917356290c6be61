# The bootstrap of one large alignment, in parts that are jobs of their own.
#
#   alignment  ->  best.nwk  ->  parts/1-50.nwk ... parts/951-1000.nwk  ->  replicates.nwk  tree.nwk
#
# What a replicate draws depends on the seed and its number alone, so that the supports are those of one
# long bootstrap, however it is split.
import os


configfile: os.path.join(workflow.basedir, "config.yaml")


SCRIPTS = os.path.join(workflow.basedir, "scripts")
RESULTS = config["results"]
ALIGNMENT = config["alignment"]
LAST = int(config["replicates"])
SIZE = int(config["part"])
PARTS = [f"{first}-{min(first + SIZE - 1, LAST)}" for first in range(1, LAST + 1, SIZE)]


localrules:
    all,


rule all:
    input:
        f"{RESULTS}/tree.nwk",


rule search:
    input:
        ALIGNMENT,
    output:
        tree=f"{RESULTS}/best.nwk",
        log=f"{RESULTS}/search.log",
    params:
        program=config["program"],
        options=config["options"],
    threads: int(config["threads"])
    shell:
        "{params.program:q} {params.options} --threads {threads} "
        "--newick {output.tree:q} --output /dev/null --log {output.log:q} {input:q}"


rule part:
    input:
        alignment=ALIGNMENT,
        tree=f"{RESULTS}/best.nwk",
    output:
        f"{RESULTS}/parts/{{first}}-{{last}}.nwk",
    params:
        program=config["program"],
        options=config["options"],
        scripts=SCRIPTS,
    threads: 1
    shell:
        "python3 {params.scripts:q}/part.py {params.program:q} {input:q} "
        "{wildcards.first} {wildcards.last} {output:q} {params.options}"


rule merge:
    input:
        alignment=ALIGNMENT,
        tree=f"{RESULTS}/best.nwk",
        parts=expand("{results}/parts/{part}.nwk", results=RESULTS, part=PARTS),
    output:
        tree=f"{RESULTS}/tree.nwk",
        replicates=f"{RESULTS}/replicates.nwk",
    params:
        program=config["program"],
        options=config["options"],
    threads: 1
    shell:
        "cat {input.parts:q} >{output.replicates:q} && "
        "{params.program:q} {params.options} --threads 1 --evaluate {input.tree:q} "
        "--support-from {output.replicates:q} --newick {output.tree:q} {input.alignment:q}"
