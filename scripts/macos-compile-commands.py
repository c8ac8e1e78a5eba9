#!/usr/bin/env python3
"""Prints one shell command per line: each file a macOS build compiles,
syntax-checked with clang for the first Apple target given, and the macOS
files for each of them.

    macos-compile-commands.py COMPILE_COMMANDS SURFACE TARGET...

The shared files take their include paths and definitions from the Linux
build's compile_commands.json; the macOS files, which that build never
compiles, take those of their Linux twin (FooMacOS.cpp, FooLinux.cpp) or of the
files in the folder above them. Linux-only files are left out: those in a
linux/ folder, those named *Linux.cpp, and those that include one.
"""

import json
import os
import shlex
import subprocess
import sys

KEPT_PREFIXES = ("-I", "-isystem", "-D", "-std=", "-W", "-f")
DROPPED_FLAGS = {"-fPIC", "-fPIE", "-fcolor-diagnostics", "-fdiagnostics-color=always"}


def is_linux_only(path):
    if "/linux/" in path or path.endswith("Linux.cpp") or "/fuzz/" in path:
        return True
    with open(path, encoding="utf-8", errors="replace") as source:
        return '#include "platform/linux/' in source.read()


def kept_flags(arguments):
    flags = []
    pending = None
    for argument in arguments[1:]:
        if pending:
            flags += [pending, argument]
            pending = None
        elif argument in ("-isystem", "-I", "-D"):
            pending = argument
        elif argument.startswith(KEPT_PREFIXES) and argument not in DROPPED_FLAGS \
                and not argument.startswith("-fsanitize"):
            flags.append(argument)
    return flags


def host_include_dirs():
    """The host compiler's C++ library folders, then its multiarch C folder:
    an Apple target knows neither."""
    result = subprocess.run(["clang++", "-x", "c++", "-E", "-v", "-"], input="", capture_output=True,
                            text=True, check=True)
    lines = result.stderr.splitlines()
    start = lines.index("#include <...> search starts here:") + 1
    end = lines.index("End of search list.")
    folders = [line.strip() for line in lines[start:end]]
    cxx = [folder for folder in folders if "/c++/" in folder]
    multiarch = [folder for folder in folders if folder.startswith("/usr/include/") and "/c++" not in folder]
    return cxx, multiarch


def main():
    compile_commands, surface, *targets = sys.argv[1:]
    root = os.getcwd()
    entries = {}
    for entry in json.load(open(compile_commands)):
        path = os.path.relpath(os.path.join(entry["directory"], entry["file"]), root)
        if path.startswith(("..", "build")):
            continue  # generated: moc and resource files
        arguments = entry.get("arguments") or shlex.split(entry["command"])
        entries[path] = kept_flags(arguments)

    # Listed without git: the tree may be a source tarball.
    tracked = sorted(os.path.relpath(os.path.join(folder, name), root)
                     for top in ("src", "tests", "bench")
                     for folder, _, names in os.walk(os.path.join(root, top)) for name in names)
    macos_files = [path for path in tracked
                   if path.endswith((".cpp", ".mm")) and ("/macos/" in path or path.endswith("MacOS.cpp"))]
    files = {path: flags for path, flags in entries.items() if not is_linux_only(path)}
    for path in macos_files:
        twin = path.replace("/macos/", "/linux/").replace("MacOS.cpp", "Linux.cpp")
        flags = entries.get(twin)
        folder = os.path.dirname(path)
        while flags is None and folder:
            folder = os.path.dirname(folder)
            flags = next((f for p, f in entries.items() if os.path.dirname(p) == folder), None)
        if flags is None:
            sys.exit(f"no build flags to borrow for {path}")
        files[path] = flags

    cxx, multiarch = host_include_dirs()
    # This machine's C library read as its own compiler reads it: with
    # _GNU_SOURCE, which g++ and clang++ define for C++ on Linux, and without
    # the __nonnull spelling clang predefines for Apple targets, which glibc
    # uses as a macro of its own.
    host = ["-nostdinc++", "-D_GNU_SOURCE", "-U__nonnull", "-U__nullable", "-U__null_unspecified"] \
        + [f for d in cxx for f in ("-isystem", d)] + [f for d in multiarch for f in ("-idirafter", d)]
    for path in sorted(files):
        language = ["-x", "objective-c++"] if path.endswith(".mm") else []
        # Both Apple targets are LP64 with the same type sizes, so the shared
        # code reads alike on them: the first target checks it, and only the
        # macOS files, where the SDK's declarations differ by architecture,
        # are checked for every target.
        for target in targets if path in macos_files else targets[:1]:
            command = ["clang++", f"--target={target}", "-fsyntax-only", "-Werror", "-isystem", surface,
                       "-isystem", os.path.join(surface, "lp64-libc")] \
                + host + files[path] + language + [path]
            print(shlex.join(command))


if __name__ == "__main__":
    main()
