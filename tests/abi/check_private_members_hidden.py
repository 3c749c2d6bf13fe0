#!/usr/bin/env python3
"""Checks that a library exports none of the private member functions of the classes its headers declare.

    usage: check_private_members_hidden.py <library> <header>...

The headers are read for their classes (with namespaces and nested classes) and the member functions each
declares in its private and its public or protected sections. The library's exported symbols
(`nm -D --defined-only`, demangled) must then hold, for every member function name declared private, no
more overloads than the class declares outside its private sections: a name that is private only is not
exported at all, and a private overload of a public name (OpenHome's private Stop(handle, response) beside
the public Stop()) does not add an exported symbol. Fails, too, when the headers declare no private member
function at all, which would make the check say nothing.
"""
import collections
import re
import subprocess
import sys

IDENTIFIER = re.compile(r"[A-Za-z_]\w*")


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    return re.sub(r"//[^\n]*", " ", text)


def class_name(statement):
    """The name declared by 'class X', 'struct Y EXPORT_MACRO Z : public B' and the like."""
    head = re.split(r"(?<!:):(?!:)", statement, maxsplit=1)[0]
    names = [n for n in IDENTIFIER.findall(head) if n not in ("class", "struct", "final", "alignas")]
    return names[-1] if names else None


def member_function_name(statement):
    """The name of the member function a declaration statement declares, or None for anything else."""
    statement = " ".join(statement.split())
    if "(" not in statement or re.match(r"(friend|using|typedef|static_assert|template)\b", statement):
        return None
    head = statement.split("(", 1)[0]
    if "=" in head or "operator" in head:
        return None
    match = re.search(r"(~?[A-Za-z_]\w*)\s*$", head)
    return match.group(1) if match else None


def read_members(path, members):
    """Adds to members[(qualified class, name)] the sections ('private' or 'other') that declare it."""
    text = strip_comments(open(path, encoding="utf-8").read())
    text = re.sub(r"^\s*#[^\n]*", " ", text, flags=re.M)
    scopes = []  # each: (kind, qualified name, [section]); kind 'namespace', 'class' or 'other'
    statement = ""
    i = 0
    while i < len(text):
        c = text[i]
        top = scopes[-1] if scopes else None
        if c == "{":
            words = statement.split()
            if words and words[0] == "namespace":
                name = words[1] if len(words) > 1 else ""
                scopes.append(("namespace", name, None))
            elif re.search(r"\b(class|struct)\b", statement) and "(" not in statement:
                prefix = [s[1] for s in scopes if s[0] in ("namespace", "class") and s[1]]
                name = class_name(statement)
                section = ["private" if re.search(r"\bclass\b", statement) else "public"]
                scopes.append(("class", "::".join(prefix + [name]), section))
            else:
                if top and top[0] == "class":
                    name = member_function_name(statement)
                    if name:
                        members[(top[1], name)].append("private" if top[2][0] == "private" else "other")
                scopes.append(("other", None, None))
            statement = ""
        elif c == "}":
            if scopes:
                scopes.pop()
            statement = ""
        elif c == ";":
            if top and top[0] == "class":
                name = member_function_name(statement)
                if name:
                    members[(top[1], name)].append("private" if top[2][0] == "private" else "other")
            statement = ""
        elif c == ":" and text[i + 1:i + 2] != ":" and text[i - 1:i] != ":" and top and top[0] == "class" \
                and statement.strip() in ("public", "private", "protected"):
            top[2][0] = statement.strip()
            statement = ""
        elif top is None or top[0] != "other":
            statement += c
        i += 1


def exported_symbols(library):
    names = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True,
                           text=True).stdout
    symbols = [line.split(" ", 2)[2] for line in names.splitlines() if line.count(" ") >= 2]
    return set(subprocess.run(["c++filt"], input="\n".join(symbols), check=True, capture_output=True,
                              text=True).stdout.splitlines())


def main():
    library, headers = sys.argv[1], sys.argv[2:]
    members = collections.defaultdict(list)
    for header in headers:
        read_members(header, members)
    symbols = exported_symbols(library)
    private = {key: sections for key, sections in members.items() if "private" in sections}
    if not private:
        print("the headers declare no private member function: nothing was checked")
        return 1
    leaks = []
    checked = 0
    for (cls, name), sections in sorted(private.items()):
        exported = sorted(s for s in symbols if s.startswith(cls + "::" + name + "("))
        if not any(s.startswith(cls + "::") for s in symbols):
            continue  # a class the library does not export at all
        checked += 1
        allowed = sections.count("other")
        if len(exported) > allowed:
            leaks.append("%s::%s: %d exported, %d declared outside the private section:\n    %s" %
                         (cls, name, len(exported), allowed, "\n    ".join(exported)))
    if checked == 0:
        print("none of the classes with private member functions is exported by %s" % library)
        return 1
    if leaks:
        print("private member functions exported by %s:\n  %s" % (library, "\n  ".join(leaks)))
        return 1
    print("%d private member functions of exported classes, none exported" % checked)
    return 0


if __name__ == "__main__":
    sys.exit(main())
