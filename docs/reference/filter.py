#!/usr/bin/env python3
"""Doxygen's input filter: filter.py FILE prints FILE in the form that Doxygen is to read.

Headers: what they declare gets a group; the members that every class has by convention get a standard comment unless
they have one of their own; protected members count as private; references to entries of docs/*.md become links.
Markdown pages: headings get anchors, and links between pages become links between Doxygen's pages.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# A pattern of a declaration and its comment. \1 and so on are the groups of the pattern.
CONVENTIONS = [
    (r"using Ptr = ", r"Pointer that counts as a user of the object."),
    (r"static (?:inline )?KitSlab::AllocationTracker memAllocationTracker_;", r"Counts the live objects of the class."),
    (r"static constexpr auto declaration\(\)",
     r"The name of the class and its attributes in order; see Kcore::Declaration."),
    (r"const (?:Kcore::)?TypeData& typeData\(\) const override", r"The attribute table of the class."),
    (r"static Ptr (\w+)Is\(|DHCPLIB_EXPORT (\w+)::Ptr \w+Factory\(",
     r"Creates a \1\2; the arguments are those of its constructor."),
    (r"inline (?:\w+::)?(\w+) \w+Instance\((?:unsigned|const Kcore::String&) (number|name)",
     r"The member of \1 with this \2. Throws Kcore::RangeException if there is none."),
    (r"static constexpr std::string_view typeName\b", r"The name of the type in messages and in the registry."),
    (r"(?:friend|bool|constexpr).* operator==\(", r"Compares the values."),
    (r"friend.* operator<=>\(", r"Orders the values."),
    (r"(?:constexpr )?std::size_t hash\(\) const", r"Hash of the value. The seed is random in each process."),
    (r"void appendText\(std::string& out\) const", r"Appends the text form to `out`."),
    (r"static bool parse\(std::string_view text, (\w+)\* \w+\)",
     r"Reads the text form. Returns false and changes nothing if `text` is not one."),
    (r"~\w+\(\)", r"Releases what the object holds."),
    (r"(\w+)\(const \1&\) = delete;", r"Not copied."),
    (r"\w+& operator=\(const \w+&\) = delete;", r"Not assigned."),
    (r"(?:constexpr )?(\w+)\(\) = default;", r"The default value of each attribute."),
    (r"void handleInitialized\(\);", r"Reads the packet; later calls do nothing."),
    (r"bool initialized\(\) const", r"Whether the object has been initialised, which the constructor does."),
    (r"(?:constexpr )?void (\w+)Is\([^,()]*(?:\([^)]*\))?\)", r"Sets \1(); see there for unit and range."),
    (r"(?:using)? ?(\w+)::\1;", r"The constructors of the base class."),
    (r"void optionDelAll\(\)", r"Removes all entries."),
    (r"(?:explicit )?\w+\(const (?:Dhcp6OptionPtr|\w+::Ptr)& opt[,)]",
     r"A view of `opt`, which it reads. A null `opt` is treated as empty."),
    (r"\w+\(const PktPtr& pkt, U16 offset[,)]",
     r"A view of the bytes at `offset` of `pkt`, which it reads. A null `pkt` is treated as empty."),
    (r"const PktPtr& pkt\(\) const", r"The packet; may be null."),
    (r"U16 offset\(\) const", r"Position of the view in the packet."),
    (r"const \w+(?:::Ptr)?& opt\(\) const", r"The option that the view reads and writes; may be null."),
    (r".* \w+\(\) const \{ return get\(&(DhcpHdr::\w+)\); \}", r"See \1. Zero if there is no header."),
    (r"\S+ (\w+)Is\($|\S+::Ptr (\w+)Is\(", r"Replaces `\1\2` by a new object and returns it."),
    (r"void (\w+)Del\(\)", r"Drops `\1`."),
    (r"static constexpr U8 (\w+)_(offset|size) =", r"The \2 of `\1` in bytes."),
    (r"using (?:iterator_category|value_type|difference_type|pointer|reference) =", r"As every iterator has it."),
    (r".* operator(?:\*|->)\(\) const", r"The current element. Requires: this is not the end."),
    (r".* operator\+\+\((?:int)?\)", r"Goes to the next element. Requires: this is not the end."),
    (r"struct (\w+)Traits \{", r"What TlvItem needs to know of a \1."),
    (r"using Type = (?:typename|\w+;)", r"The enumeration that names the codes."),
    (r"using Shape = \S+;", r"The layout of the item."),
    (r"(?:constexpr )?std::size_t size\(\) const", r"Number of bytes or entries."),
    (r"bool empty\(\) const", r"Whether the size is 0."),
    (r"(?:const )?\S+ (?:begin|end)\(\) const", r"For loops over all bytes or entries."),
    (r"(?:const )?(?:U8|char)\* data\(\)", r"The first byte. Valid until the object changes."),
    (r".*operator\[\]\(std::size_t i\)", r"The byte at `i`. Requires: `i` < size()."),
    (r"void clear\(\)", r"Removes everything."),
    (r"(?:explicit )?(\w+)\(const \1&(?: \w+)?\)", r"A copy."),
    (r"(\w+)\(\1&&.*\)", r"Takes over the contents of the other object."),
    (r"\w+& operator=\(", r"Becomes equal to the other object."),
]


def standard_comment(line):
    text = line.strip()
    for pattern, comment in CONVENTIONS:
        match = re.match(pattern, text)
        if match:
            return match.expand(comment)
    return None


def slug(heading):
    """The anchor of a heading, as on GitHub."""
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def page(path):
    return str(path).removesuffix(".md").replace("/", "_")


def anchor(path, heading):
    return f"{page(path)}_{heading}"


def linked_comment(line):
    """Turns docs/PAGE.md#ENTRY in a comment into a link."""
    line = re.sub(r"\(?docs/([\w/]+\.md)#([\w-]+)\)?",
                  lambda m: f"(@ref {anchor('docs/' + m[1], m[2])} \"{m[2]}\")", line)
    return re.sub(r"(?<![\w\"])docs/(\w+)\.md", lambda m: f"@ref docs_{m[1]} \"docs/{m[1]}.md\"", line)


# The group of what is declared in a folder or file; the first prefix that fits. docs/reference/overview.md names them.
GROUPS = [
    ("DhcpLib/DhcpHdr", "v4"), ("DhcpLib/Dhcp6Hdr", "v6"), ("DhcpLib/Dhcp6Identifiers", "v6"),
    ("DhcpLib/Dhcp6MessageBuilder", "v6"), ("DhcpLib/OptionParser", "options"), ("DhcpLib/DhcpParser", "parsers"),
    ("DhcpLib/Dhcp6Parser", "parsers"), ("DhcpLib/Frame", "parsers"), ("DhcpLib/DhcpSnoopingPamManager", "live"),
    ("DhcpLib/DhcpLib", "options"), ("DhcpLib", "basis"), ("platform/Kitnet", "kitnet"), ("platform/Interface", "live"),
    ("platform/KernelNetInfo", "live"), ("platform/Bridging", "kitnet"), ("platform/L3", "kitnet"),
    ("platform/Tyk", "tyk"), ("platform", "kcore"),
]


def split_comments(lines):
    """Returns the comments that an empty line follows, which describe the group, and the other lines."""
    apart, rest, comment = [], [], []
    for line in lines:
        if line.startswith("///"):
            comment.append(line)
            continue
        (apart if line == "" else rest).extend(comment)
        comment = []
        rest.append(line)
    return apart, rest


def with_group(path, lines):
    group = next(name for prefix, name in GROUPS if str(path).startswith(prefix))
    apart, rest = split_comments(lines)
    for line in rest:
        if re.match(r"}  // namespace (?!Detail)[\w:]+$", line):
            yield "/// @}"
        yield line
        if re.match(r"namespace (?!Detail)[\w:]+ {$", line):
            yield f"/// @addtogroup {group}"
            if apart:
                yield "/// @details"
            yield from apart
            yield "/// @{"
            apart = []


CELL = re.compile(r"(\d+)  (.+?)(?=\s{3,}\d|$)")


def table(rows, head=()):
    """An HTML table on one line, so that the comment stays one paragraph for Doxygen."""
    cells = "".join(f"<th>{each}</th>" for each in head)
    body = "".join("<tr>" + "".join(f"<td>{cell}</td>" for cell in row) + "</tr>" for row in rows)
    return '<table class="layout">' + (f"<tr>{cells}</tr>" if head else "") + body + "</table>"


def layout_table(block):
    """The table for lines such as "offset 0  type (1)     1  length (1)": position and field, and the size if given."""
    rows = []
    for line in block:
        label = re.match(r"\s*([^\d\s].*?)\s+(?=\d+  )", line)
        variant = label[1] if label and "offset" not in label[1] else ""
        for position, field in CELL.findall(line):
            size = re.search(r" \((\d+)\)", field)
            name = field.replace(size[0], "") if size else field
            rows.append((position, name + (f" (type {variant})" if variant else ""), size[1] if size else ""))
    first = re.match(r"\s*(\D*?)offset", block[0])
    where = f"octet of the {first[1].strip()}" if first and first[1].strip() else "octet"
    if not first:
        return table([row[:2] for row in rows])
    return table(rows, (where, "field", "octets"))


def item_layout(line):
    """Puts a table behind "code (1), length (1), data" in a comment."""
    def shown(match):
        code, length = int(match[1]), int(match[2])
        rows = [(0, "code", code), (code, "length of the data", length), (code + length, "data", "")]
        return ":\n/// " + table(rows, ("octet", "field", "octets")) + "\n///"
    return re.sub(r": code \((\d)\), length \((\d)\), data\.", shown, line)


def indented_block(block):
    """Indented lines of a comment: a layout, a list, a table of two columns, or text to be shown as it is."""
    if block[0].lstrip().startswith("- "):
        return block
    if all(CELL.search(line) for line in block):
        return [layout_table(block)]
    rows = []
    least = min(len(line) - len(line.lstrip()) for line in block)
    for line in block:
        columns = re.match(r"\s*(\S.*?)\s{2,}(\S.*)", line)
        if len(line) - len(line.lstrip()) == least and columns:
            rows.append([columns[1], columns[2]])
        elif rows:
            rows[-1][1] += " " + line.strip()
        else:
            return ["@verbatim", *block, "@endverbatim"]
    return [table(rows)] if "|" not in block[0] else ["@verbatim", *block, "@endverbatim"]


def with_tables(lines):
    """Replaces the indented blocks of comments."""
    block, indent = [], ""
    for line in [*lines, ""]:
        match = re.match(r"(\s*)///(   ?\s*\S.*)", line)
        if match:
            indent = match[1]
            block.append(match[2])
            continue
        if block:
            yield from (f"{indent}/// {each}" for each in indented_block(block))
            block = []
        yield line


def without_specializations(lines):
    """Leaves out specialisations of std::hash and of EnumTable: the one is found by its effect, the other is a list."""
    inside, held = False, None
    for line in lines:
        if re.match(r"struct (?:std::hash|Kcore::EnumTable)<", line):
            inside, held = True, None
        if held is not None:
            yield held
            held = None
        if inside:
            inside = not line.startswith("};")
        elif line.startswith("template <"):
            held = line
        else:
            yield line


def filtered_header(lines):
    lines = list(with_tables(without_specializations(lines)))
    previous = ""
    for line in lines:
        text = line.strip()
        indent = line[: len(line) - len(line.lstrip())]
        if text == "protected:":
            line = indent + "private:"
        has_comment = "///" in text or previous.startswith(("///", "template", "requires"))
        if not has_comment:
            comment = standard_comment(line)
            if comment:
                yield f"{indent}/// {comment}"
        if "///" in line:
            # "\xNN" stands for an escape, not for a command of Doxygen.
            line = re.sub(r"(?<!\\)\\x", r"\\\\x", linked_comment(item_layout(line)))
        # Doxygen takes the comment of two members for that of the last one.
        pair = re.match(r"(\s*\w+) (\w+), (\w+);(\s+///< .*)", line)
        if pair:
            yield f"{pair[1]} {pair[2]};{pair[4]}"
            line = f"{pair[1]} {pair[3]};{pair[4]}"
        yield line
        previous = text


def link(path, target):
    """The Markdown link target that stands for `target`, a target in the page `path`; None if it is no page."""
    if re.match(r"\w+:", target):
        return target
    file, _, heading = target.partition("#")
    resolved = (ROOT / path).parent.joinpath(file).resolve() if file else ROOT / path
    if resolved.suffix != ".md" or not resolved.is_relative_to(ROOT):
        return None
    inner = resolved.relative_to(ROOT)
    return "@ref " + (anchor(inner, heading) if heading else page(inner))


def filtered_page(path, lines):
    inside_code, seen = False, {}
    for line in lines:
        if line.startswith("```"):
            inside_code = not inside_code
        if not inside_code and not line.startswith("    "):
            heading = re.match(r"(#+) (.*)", line)
            if heading:
                name = slug(heading[2])
                seen[name] = seen.get(name, -1) + 1
                if seen[name]:
                    name += f"-{seen[name]}"
                line += f" {{#{page(path) if heading[1] == '#' else anchor(path, name)}}}"

            def relinked(match):
                target = link(path, match[2])
                return match[1] if target is None else f"[{match[1]}]({target})"
            line = re.sub(r"(?<!!)\[([^\]]+)\]\(([^)]+)\)", relinked, line)
        yield line


def main():
    file = pathlib.Path(sys.argv[1]).resolve()
    lines = file.read_text(encoding="utf-8").splitlines()
    path = file.relative_to(ROOT)
    print("\n".join(filtered_page(path, lines) if file.suffix == ".md" else with_group(path, filtered_header(lines))))


main()
