"""Replaces the links of a kit's pages that lead into the source tree with plain text: pages.py KIT

The pages are written for the source tree and link many of its files. A link to another page of the kit, or to a packed file,
stays.
"""

import re
import sys
from pathlib import Path

# This list is explicit because an installation folder may contain other files.
PAGES = ("README.md", "docs/*.md", "examples/README.md", "licenses/README.md", "agent/README.md")
FENCE = re.compile(r"^\s*```")
LINK = re.compile(r"\[([^\[\]]*)\]\(([^)\s]+)\)")


def leads_somewhere(page, kit, target):
    path = target.partition("#")[0]
    if not path or re.match(r"[a-z]+:", path):
        return True
    file = (page.parent / path).resolve()
    # The pages mean the README of the source tree. The kit has another README.
    return file.exists() and file.is_relative_to(kit) and file != kit / "README.md"


def rewrite(page, kit):
    def plain(link):
        return link.group(0) if leads_somewhere(page, kit, link.group(2)) else link.group(1)

    # Blocks of prose and code alternate. A link may continue on the next line.
    blocks = [[]]
    for line in page.read_text(encoding="utf-8").split("\n"):
        if FENCE.match(line):
            blocks.append([])
        blocks[-1].append(line)
    texts = ["\n".join(block) for block in blocks]
    # A block that begins with an opening fence contains code. A block that begins with a closing fence contains prose.
    texts = [text if number % 2 else LINK.sub(plain, text) for number, text in enumerate(texts)]
    page.write_text("\n".join(texts), encoding="utf-8", newline="\n")


def main(folder):
    kit = Path(folder).resolve()
    for pattern in PAGES:
        for page in kit.glob(pattern):
            rewrite(page, kit)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: pages.py KIT")
    main(sys.argv[1])
