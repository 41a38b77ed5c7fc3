#!/usr/bin/env python3
"""Checks the guides in docs/guide/ and README.md against the programs in examples/.

  guides.py check            code blocks are the marked parts of the examples, links between pages lead somewhere
  guides.py run FOLDER...    commands print what the guides show; the programs are in the folders
  guides.py update [FOLDER...]    puts the code, and with folders the output, into the guides

A code block after the comment <!-- FILE NAME --> is the part of examples/FILE between the lines "// [NAME]" and
"// [/NAME]", without its indentation; after <!-- FILE --> it is the whole file. A guide has no other C++ blocks. A line
"    $ COMMAND" is run in a folder that has tests/, the bundled captures and the files of examples/; the indented lines
after it are what it prints.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGES = [TOP / "README.md", *sorted((TOP / "docs/guide").glob("*.md"))]
CODE = re.compile(r"(<!-- ([\w.]+)(?: (\w+))? -->\n```\w*\n)(.*?)(?=```)", re.S)
OPTIONAL = {"dhcptool", "dhcprelay"}  # programs that a build may leave out
COMMAND = re.compile(r"^    \$ (.*)\n((?:    (?!\$ ).*\n)*)", re.M)


def part(file, name):
    """The part `name` of an example."""
    text = (TOP / "examples" / file).read_text()
    if not name:
        return text
    marked = re.search(rf"^ *// \[{name}\]\n(.*?)^ *// \[/{name}\]\n", text, re.M | re.S)
    if not marked:
        sys.exit(f"examples/{file} has no part {name}")
    return textwrap.dedent(marked[1])


def with_code(text):
    return CODE.sub(lambda block: block[1] + part(block[2], block[3]), text)


def prose(page):
    """The text of a page without its code blocks."""
    return re.sub(r"^```.*?^```", "", page.read_text(), flags=re.M | re.S)


def anchors(page):
    """The anchors of a page's headings, as on GitHub."""
    headings = re.findall(r"^#+ (.*)$", prose(page), re.M)
    return {re.sub(r"[^\w\- ]", "", each.lower()).replace(" ", "-") for each in headings}


def broken_links():
    """Yields "PAGE: TARGET" for each link to a file or heading that does not exist."""
    for page in [*TOP.glob("*.md"), *(TOP / "docs").rglob("*.md"), *(TOP / "tests").rglob("*.md")]:
        for target in re.findall(r"\]\((?!\w+:)([^)]+)\)", prose(page)):
            file, _, heading = target.partition("#")
            linked = (page.parent / file).resolve() if file else page
            if not linked.exists() or heading and heading not in anchors(linked):
                yield f"{page.relative_to(TOP)}: {target}"


def printed(command, folder, path):
    done = subprocess.run(command, shell=True, cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          timeout=60, check=False, env={**os.environ, "PATH": path})
    if done.returncode != 0:
        sys.exit(f"{command}: exit status {done.returncode}\n{done.stdout}")
    return "".join(f"    {line}\n" for line in done.stdout.splitlines())


def with_output(text, programs):
    """Runs the commands whose program is in one of the folders `programs`."""
    with tempfile.TemporaryDirectory() as folder:
        for file in [TOP / "tests", *(TOP / "tests/data/captures").glob("*.pcap"), *(TOP / "examples").iterdir()]:
            (pathlib.Path(folder) / file.name).symlink_to(file)
        path = os.pathsep.join([*(os.path.abspath(each) for each in programs), os.environ["PATH"]])

        def shown(example):
            program = example[1].split()[0]
            if shutil.which(program, path=path) is None:
                if program not in OPTIONAL:
                    sys.exit(f"{program}: not found in {', '.join(programs)}")
                print(f"skipped, not built: {program}")
                return example[0]
            shown.count += 1
            return f"    $ {example[1]}\n{printed(example[1], folder, path)}"
        shown.count = 0
        return COMMAND.sub(shown, text), shown.count


def main():
    action, programs = sys.argv[1], sys.argv[2:]
    stale, blocks, commands = [], 0, 0
    for page in PAGES:
        text = page.read_text()
        fresh = with_code(text) if action != "run" else text
        blocks += len(CODE.findall(text))
        unmarked = text.count("```cpp\n") - sum(block[0].endswith("```cpp\n") for block in CODE.findall(text))
        if page.parent.name == "guide" and unmarked > 0:
            sys.exit(f"{page.name}: {unmarked} C++ blocks are not part of an example")
        if programs:
            fresh, count = with_output(fresh, programs)
            commands += count
        if fresh != text:
            stale.append(page)
            if action == "update":
                page.write_text(fresh)
            else:
                subprocess.run(["diff", "-u", page, "-"], input=fresh, text=True, check=False)
    print(f"{len(PAGES)} pages, {blocks} code blocks, {commands} commands run")
    broken = list(broken_links()) if action == "check" else []
    if broken:
        sys.exit("broken links:\n" + "\n".join(broken))
    if blocks == 0 or action == "run" and commands == 0:
        sys.exit("nothing to check")
    if stale and action != "update":
        sys.exit("script/guides.py update brings up to date: " + " ".join(page.name for page in stale))


main()
