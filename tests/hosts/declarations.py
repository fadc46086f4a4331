"""What the examples in other languages declare of QorControlC.dll, and where that differs from the
header. Each language says a type in words of its own; below is what it may say for a type of C.
"""
import ctypes
import re
import subprocess
import sys
from typing import Callable, Dict, List, NamedTuple, Set, Tuple

import header
from header import Function, Table, Type

EXAMPLES = header.ROOT / "examples"
Signature = Tuple[str, List[str]]  # result, parameters
POINTER_SIZE = ctypes.sizeof(ctypes.c_void_p)  # of the machine that Python and C# run on here


class Declared(NamedTuple):
    """In the language's words. A function may be declared more than once."""
    constants: Dict[str, int]
    structures: Dict[str, List[Tuple[str, str]]]
    layouts: Dict[str, Dict[str, int]]  # on this machine, see header.layout
    functions: Dict[str, List[Signature]]
    callbacks: Dict[str, List[Signature]]
    words_for: Callable[[Type, str], Set[str]]  # the place is "result", "parameter" or "field"
    is_complete: bool = True  # else it declares just what it needs


def signature_differs(function: Function, said: Signature, words_for) -> List[str]:
    result, parameters = said
    found = []
    if result not in words_for(function.result, "result"):
        found.append(f"{function.name}: gives {result}, the header {function.result}")
    if len(parameters) != len(function.parameters):
        return found + [f"{function.name}: {len(parameters)} parameters, the header has "
                        f"{len(function.parameters)}"]
    for wanted, word in zip(function.parameters, parameters):
        if word not in words_for(wanted.type, "parameter"):
            found.append(f"{function.name}: {wanted.name} is {word}, in the header {wanted.type}")
    return found


def names_differ(kind: str, wanted, found, is_complete: bool) -> List[str]:
    missing = [name for name in wanted if name not in found] if is_complete else []
    foreign = [name for name in found if name not in wanted]
    return [f"{kind} {name} is missing" for name in missing] + \
           [f"{kind} {name} is not in the header" for name in foreign]


def functions_differ(kind, wanted: List[Function], said: Dict[str, List[Signature]], declared) -> List[str]:
    found = names_differ(kind, [function.name for function in wanted], said, declared.is_complete)
    for function in wanted:
        for signature in said.get(function.name, []):
            found += signature_differs(function, signature, declared.words_for)
    return found


def constants_differ(table: Table, declared: Declared) -> List[str]:
    found = names_differ("constant", table.constants, declared.constants, declared.is_complete)
    return found + [f"constant {name} is {value}, in the header {table.constants[name]}"
                    for name, value in declared.constants.items()
                    if table.constants.get(name, value) != value]


def structures_differ(table: Table, declared: Declared) -> List[str]:
    found = names_differ("structure", table.structures, declared.structures, declared.is_complete)
    for name, fields in table.structures.items():
        said = declared.structures.get(name)
        if said is None:
            continue
        if [field.name for field in fields] != [field for field, _ in said]:
            found.append(f"structure {name} has the fields {', '.join(field for field, _ in said)}")
            continue
        found += [f"structure {name}: {field.name} is {word}, in the header {field.type}"
                  for field, (_, word) in zip(fields, said)
                  if word not in declared.words_for(field.type, "field")]
        wanted = header.layout(fields, POINTER_SIZE)
        if declared.layouts.get(name, wanted) != wanted:
            found.append(f"structure {name} is laid out as {declared.layouts[name]}")
    return found


def differences(table: Table, declared: Declared) -> List[str]:
    return (constants_differ(table, declared) + structures_differ(table, declared)
            + functions_differ("function", table.functions, declared.functions, declared)
            + functions_differ("callback", table.callbacks, declared.callbacks, declared))


# Python

def python_word(kind, module) -> str:
    if kind is None:
        return "None"
    if isinstance(kind, type) and issubclass(kind, ctypes._Pointer):  # pylint: disable=protected-access
        return f"POINTER({python_word(kind._type_, module)})"
    return next((name for name, value in vars(module).items() if value is kind and name.startswith("Qor")
                 and value is not ctypes.c_void_p), kind.__name__)


def python_words_for(kind: Type, place: str) -> Set[str]:
    if kind.pointers == 0:
        words = {"int": "c_int", "unsigned int": "c_uint", "double": "c_double", "void": "None",
                 "QorHandle": "c_void_p", "QorStream": "c_void_p"}
        return {words.get(kind.base, kind.base)}
    if kind.base == "void":
        return {"c_void_p"}
    if kind.base == "char" and kind.const:
        return {"c_char_p"} if kind.pointers == 1 else {"POINTER(c_char_p)"}
    words = {"char": "c_char", "int": "c_int", "unsigned int": "c_uint", "double": "c_double",
             "unsigned char": "c_ubyte", "QorHandle": "c_void_p", "QorStream": "c_void_p"}
    return {f"POINTER({words.get(kind.base, kind.base)})"}


def of_python() -> Declared:
    sys.path.insert(0, str(EXAMPLES))
    import qorcontrol_ctypes as module  # pylint: disable=import-outside-toplevel
    names = vars(module)
    structures = {name: value for name, value in names.items() if isinstance(value, type)
                  and issubclass(value, ctypes.Structure) and name.startswith("Qor")}
    # Only of the library's own calling convention: CFUNCTYPE, not WINFUNCTYPE.
    callbacks = {name: value for name, value in names.items() if isinstance(value, type)
                 and issubclass(value, ctypes._CFuncPtr) and value._flags_ & 1}  # pylint: disable=protected-access

    def words(kinds):
        return [python_word(kind, module) for kind in kinds]

    return Declared(
        {name: value for name, value in names.items() if name.startswith("QOR_")},
        {name: [(field, python_word(kind, module)) for field, kind in value._fields_]
         for name, value in structures.items()},
        {name: {**{field: getattr(value, field).offset for field, _ in value._fields_},
                "": ctypes.sizeof(value)} for name, value in structures.items()},
        {name: [(python_word(result, module), words(parameters))]
         for name, (result, parameters) in module.FUNCTIONS.items()},
        {name: [(python_word(value._restype_, module), words(value._argtypes_))]
         for name, value in callbacks.items()},
        python_words_for)


# C#

def csharp_words_for(kind: Type, place: str) -> Set[str]:
    plain = {"int": "Int32", "unsigned int": "UInt32", "double": "Double", "void": "Void",
             "unsigned char": "Byte", "QorHandle": "IntPtr", "QorStream": "IntPtr"}
    word = plain.get(kind.base, kind.base)
    if kind.pointers == 0:
        return {word}
    if place != "parameter" or kind.base == "void":
        return {"IntPtr"}
    if kind.base == "char":
        if kind.pointers == 2:
            return {"IntPtr[]"}
        return {"String/LPUTF8Str", "IntPtr"} if kind.const else {"Byte[]/out"}
    if kind.const:
        return {word + "[]", word + "&", "IntPtr"} if kind.base.startswith("Qor") else {word + "[]"}
    return {word + "&", word + "[]/out"}


def of_csharp(declarations: str, program: str) -> Declared:
    """Both are programs: the one that tells, and the one that is told of."""
    text = subprocess.run(["mono", declarations, program], stdout=subprocess.PIPE, text=True,
                          check=True).stdout
    declared = Declared({}, {}, {}, {}, {}, csharp_words_for)
    for line in text.splitlines():
        kind, name, *words = line.split("\t")
        if kind == "constant":
            declared.constants[name] = int(words[0])
        elif kind == "field":
            declared.structures.setdefault(name, []).append((words[0], words[1]))
            declared.layouts.setdefault(name, {})[words[0]] = int(words[2])
        elif kind == "size":
            declared.layouts[name][""] = int(words[0])
        else:
            functions = declared.functions if kind == "function" else declared.callbacks
            expected = "QorControlC.dll/Cdecl" if kind == "function" else "Cdecl"
            result = words[1] if words[0] == expected else words[0]
            functions.setdefault(name, []).append((result, words[2].split(",") if words[2] else []))
    return declared


# Node.js

def node_words_for(kind: Type, place: str) -> Set[str]:
    words = {str(kind)}
    if place == "parameter" and kind.pointers == 1 and not kind.const:
        words = {f"_Out_ {kind}", f"_Inout_ {kind}"}
    if kind.const and kind.base.startswith("Qor"):
        words.add("const void*")  # which can only be null
    return words


def node_member(text: str, known) -> Tuple[str, str]:
    """The name and the type in words, with the mark that says who writes."""
    mark = re.match(r"\s*(_Out_|_Inout_)\s", text)
    member = header.parse_member(text[mark.end():] if mark else text, known)
    return member.name, f"{mark[1]} {member.type}" if mark else str(member.type)


def node_function(text: str, known) -> Tuple[str, Signature]:
    result, name, parameters = re.fullmatch(r"(.*?)\s(\w+)\((.*)\)", text).groups()
    pieces = [] if parameters == "void" else parameters.split(",")
    return name, (str(header.parse_type(result, known)), [node_member(piece, known)[1] for piece in pieces])


def of_node() -> Declared:
    text = (EXAMPLES / "tour.mjs").read_text(encoding="utf-8")
    structures = {name: re.findall(r"(\w+): '([^']*)'", fields) for name, fields in
                  re.findall(r"koffi\.struct\('(\w+)', \{(.*?)\}\)", text, re.DOTALL)}
    aliases = dict(re.findall(r"koffi\.alias\('(\w+)', '(\w+)'\)", text))
    if set(aliases.values()) != {"uint32_t"}:
        raise header.NotUnderstood(str(aliases))
    listed = re.search(r"const prototypes = \[(.*?)\n\];", text, re.DOTALL)[1]
    prototypes = re.findall(r"'([^']*)'", re.sub(r"'\s*\+ '", "", listed))
    functions: Dict[str, List[Signature]] = {}
    for prototype in prototypes:
        name, signature = node_function(prototype, [*structures, *aliases])
        functions.setdefault(name, []).append(signature)
    constants = {name: int(value) for name, value in re.findall(r"\b(QOR_\w+) = (\d+)", text)}
    return Declared(constants, structures, {}, functions, {}, node_words_for, False)
