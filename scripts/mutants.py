#!/usr/bin/env python3
"""The mutants of scripts/mutate.sh: lists a seeded sample, or applies one.

  mutants.py --count N --seed S PATH...   prints N mutants, one per line:
                                          FILE, LINE, OPERATOR, NEW LINE
                                          (tab-separated; tabs and newlines
                                          in the line escaped as \\t, \\n)
  mutants.py --apply FILE LINE OPERATOR NEW_LINE   writes one into FILE

Candidates are every place in the C++ sources under PATH where an operator
applies; the sample is drawn from them with random.Random(S), so the same
sources and seed give the same mutants.
"""
import pathlib
import random
import re
import sys

COMPARISONS = {" < ": " >= ", " >= ": " < ", " > ": " <= ", " <= ": " > ",
               " == ": " != ", " != ": " == "}
STATEMENT = re.compile(
    r"^\s*(\+\+|--)?[A-Za-z_][\w:]*(\.|->|\[|\(|\s*[-+*/|&]?=[^=]|\+\+|--)")
DECLARATION = re.compile(r"^\s*(const|auto|static|return|using|typedef|"
                         r"case|default|template|namespace|class|struct)\b")
CONDITION = re.compile(r"\b(if|while) \(")
NUMBER = re.compile(r"(?<![\w.])(\d+)(?![\w.])")
STRING = re.compile(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'')


def code_lines(path):
    """(number, line) of the lines outside comments and preprocessor lines."""
    in_comment = False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        stripped = line.strip()
        if in_comment:
            in_comment = "*/" not in stripped
            continue
        if stripped.startswith("/*"):
            in_comment = "*/" not in stripped
            continue
        if stripped.startswith(("//", "#")) or not stripped:
            continue
        yield number, line


def masked(line):
    """The line with string literals and a trailing comment blanked out, so
    that nothing inside them is mutated; same length as the line."""
    out = STRING.sub(lambda m: '"' + " " * (len(m.group(0)) - 2) + '"', line)
    at = out.find("//")
    return out if at < 0 else out[:at] + " " * (len(out) - at)


def closing_paren(text, open_at):
    depth = 0
    for i in range(open_at, len(text)):
        depth += {"(": 1, ")": -1}.get(text[i], 0)
        if depth == 0:
            return i
    return -1


def mutants_of(line):
    """Every (operator, new line) for one line of code."""
    view = masked(line)
    for old, new in COMPARISONS.items():
        for m in re.finditer(re.escape(old), view):
            yield "comparison", line[:m.start()] + new + line[m.end():]
    for m in NUMBER.finditer(view):
        value = str(int(m.group(1)) + 1)
        yield "constant", line[:m.start()] + value + line[m.end():]
    for m in CONDITION.finditer(view):
        start = m.end() - 1
        end = closing_paren(view, start)
        if end > 0:
            yield "condition", (line[:start + 1] + "!(" +
                                line[start + 1:end] + ")" + line[end:])
    if (view.rstrip().endswith(";") and STATEMENT.match(view)
            and not DECLARATION.match(view)):
        yield "statement", re.sub(r"\S.*", ";  // removed", line, count=1)


def candidates(paths):
    files = []
    for p in map(pathlib.Path, paths):
        files += sorted(p.rglob("*.cpp")) if p.is_dir() else [p]
    for path in files:
        for number, line in code_lines(path):
            for operator, new in mutants_of(line):
                yield str(path), number, operator, new


def escape(text):
    return text.replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n")


def unescape(text):
    return re.sub(r"\\(.)", lambda m: {"t": "\t", "n": "\n"}.get(
        m.group(1), m.group(1)), text)


def main(argv):
    if argv[:1] == ["--apply"]:
        file, line, _, new = argv[1:5]
        path = pathlib.Path(file)
        lines = path.read_text().split("\n")
        lines[int(line) - 1] = unescape(new)
        path.write_text("\n".join(lines))
        return 0
    count, seed = int(argv[argv.index("--count") + 1]), argv[argv.index("--seed") + 1]
    paths = [a for i, a in enumerate(argv)
             if not a.startswith("--") and argv[i - 1] not in ("--count", "--seed")]
    pool = list(candidates(paths))
    for file, number, operator, new in random.Random(seed).sample(
            pool, min(count, len(pool))):
        print(f"{file}\t{number}\t{operator}\t{escape(new)}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
