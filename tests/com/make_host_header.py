"""Makes the C++ header of a host that is bound early, from the table of the type library in a DLL.

usage: make_host_header.py <table> <header>
"""

import pathlib
import re
import sys

INTERFACE = re.compile(r"(interface|dispinterface|class) (\w+) \{([0-9A-F-]+)\}")
FUNCTION = re.compile(r"  slot (\d+): (-?\d+) (\w+) (\S+) (\w+)\((.*)\)")
FIRST_SLOT = 7  # after those of IDispatch


def parameters(text):
    return ", ".join(part.split("] ", 1)[1] for part in text.split(", [")) if text else ""


def main():
    lines = pathlib.Path(sys.argv[1]).read_text().splitlines()
    out = ["// Made from the type library in the DLL.", "#pragma once", "", "#include <oaidl.h>", "",
           "namespace host {", ""]
    after = []
    is_open = False
    slot = 0

    def close():
        nonlocal is_open
        if is_open:
            out.extend(["};", ""])
        is_open = False

    for line in lines:
        if line.lstrip().startswith("# "):  # a help string
            continue
        interface, function = INTERFACE.match(line), FUNCTION.match(line)
        if line.startswith("enum "):
            close()
            out.append(f"enum {line[5:]} : long {{")
            is_open = True
        elif " = " in line and not function:
            out.append(f"   {line},")
        elif interface:
            close()
            kind, name, guid = interface.groups()
            # No name with two underscores in front in a program's own code.
            name = "Events" if kind == "dispinterface" else name
            identifier = re.sub(r"^_+", "", name)
            first, second, third, fourth, fifth = guid.split("-")
            rest = ", ".join(f"0x{(fourth + fifth)[i:i + 2]}" for i in range(0, 16, 2))
            after.append(f"constexpr GUID k{identifier}{'Class' if kind == 'class' else 'Id'} = "
                         f"{{0x{first}, 0x{second}, 0x{third}, {{{rest}}}}};")
            if kind == "interface":
                out.append(f"struct {name} : public IDispatch {{")
                is_open = True
                slot = FIRST_SLOT
        elif function:
            number, _, kind, result, name, arguments = function.groups()
            assert int(number) == slot, line
            slot += 1
            prefix = {"get": "get_", "put": "put_"}.get(kind, "")
            out.append(f"    virtual {result} __stdcall {prefix}{name}({parameters(arguments)}) = 0;")
    close()
    out.extend([*after, "", "}  // namespace host"])
    pathlib.Path(sys.argv[2]).write_text("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
