"""Writes a C++ program that names every function and variable declared in the installed headers.

declarations.py INCLUDE_DIR PROGRAM

The program takes the address of each symbol that a consumer may need from the libraries: functions, member functions
(private ones too) and variables that the headers declare and do not define, and the virtual tables and type information
of classes whose virtual functions are in the library. It does not link when a library lacks one of them or hides it.
Exits with status 77 if libclang for Python is not installed.
"""

import pathlib
import sys

try:
    from clang import cindex
    from clang.cindex import CursorKind
except ImportError:
    print("skipped: Debian package python3-clang is not installed")
    sys.exit(77)

PLATFORM = "DhcpPlatform"
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
             CursorKind.CONVERSION_FUNCTION}
CLASSES = {CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL, CursorKind.UNION_DECL}
# Class templates are not among them: their members are instantiated by the consumer.
SCOPES = CLASSES | {CursorKind.NAMESPACE, CursorKind.LINKAGE_SPEC, CursorKind.FRIEND_DECL}


def parse(include_dir):
    """The translation unit that includes every header below include_dir."""
    headers = sorted(str(path.relative_to(include_dir)) for path in include_dir.rglob("*.h"))
    source = "".join(f'#include "{header.removeprefix(PLATFORM + "/")}"\n' for header in headers)
    name = "/all_headers.cpp"
    arguments = ["-std=c++20", f"-I{include_dir}", f"-I{include_dir / PLATFORM}"]
    unit = cindex.Index.create().parse(name, args=arguments, unsaved_files=[(name, source)])
    errors = [str(each) for each in unit.diagnostics if each.severity >= cindex.Diagnostic.Error]
    if errors:
        sys.exit("\n".join(errors))
    return unit


def is_undefined_function(cursor):
    return (cursor.kind in FUNCTIONS and cursor.get_definition() is None and not cursor.is_pure_virtual_method()
            and [token.spelling for token in cursor.get_tokens()][-2:] not in (["=", "default"], ["=", "delete"]))


def is_undefined_variable(cursor):
    return cursor.kind == CursorKind.VAR_DECL and cursor.get_definition() is None


def class_symbol(prefix, cursor):
    """The mangled name (Itanium C++ ABI) of `prefix` for a class that is not in a template."""
    names = []
    while cursor.kind != CursorKind.TRANSLATION_UNIT:
        names.insert(0, f"{len(cursor.spelling)}{cursor.spelling}")
        cursor = cursor.semantic_parent
    return prefix + (names[0] if len(names) == 1 else f"N{''.join(names)}E")


def symbols(scope, include_dir):
    """Yields (symbol, the cursor that declares it) for all that is declared below include_dir."""
    for cursor in scope.get_children():
        file = cursor.location.file
        if file is None or include_dir not in pathlib.Path(file.name).parents:
            continue
        if cursor.kind in SCOPES:
            yield from symbols(cursor, include_dir)
        if is_undefined_function(cursor) or is_undefined_variable(cursor):
            yield cursor.mangled_name, cursor
        if cursor.kind in CLASSES and any(is_undefined_function(member) and member.is_virtual_method()
                                          for member in cursor.get_children()):
            yield class_symbol("_ZTV", cursor), cursor
            yield class_symbol("_ZTI", cursor), cursor


def main():
    include_dir = pathlib.Path(sys.argv[1]).resolve()
    declared = dict(symbols(parse(include_dir).cursor, include_dir))
    if not declared:
        sys.exit("no declarations found")
    with open(sys.argv[2], "w", encoding="utf-8") as program:
        for number, (symbol, cursor) in enumerate(declared.items()):
            place = f"{pathlib.Path(cursor.location.file.name).relative_to(include_dir)}:{cursor.location.line}"
            program.write(f'extern "C" const char symbol{number} __asm__("{symbol}");  // {place}\n')
        program.write("const void* symbols[] = {\n")
        program.writelines(f"    &symbol{number},\n" for number in range(len(declared)))
        program.write("};\nint main() { return symbols[0] == nullptr; }\n")
    print(f"{len(declared)} declarations")


main()
