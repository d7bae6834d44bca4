"""The snippets of README.md, docs/embedding.md and docs/command.md: each is run, and gives what the text beside it says.

    readme_examples.py COMPILER INCLUDE_DIR LIBRARY_DIR COMMAND PYTHON_DIR

Python: a comment behind an expression is its repr.  A prompt: what follows `> statement` is what it prints.
A script of the language runs as it is.  C++: a block without main becomes the body of one, with `rain` and `w` at hand.
"""

import ast
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
compiler, include, library, command, package = sys.argv[1:]


def blocks(page):
    return re.findall(r"^```(\w*)\n(.*?)^```", (ROOT / page).read_text(), flags=re.M | re.S)


def run_python(source):
    """Runs it; an expression with a comment must have that repr, where the comment is one."""
    scope = {}
    lines = source.splitlines()
    for node in ast.parse(source).body:
        text = ast.get_source_segment(source, node)
        if not isinstance(node, ast.Expr):
            exec(text, scope)
            continue
        value = eval(text, scope)
        comment = re.search(r"\s# (.*)$", lines[node.end_lineno - 1])
        if comment and re.match(r"array\(|\w+\(.*\)$|[-\d.e]+$", comment.group(1)):
            assert repr(value) == comment.group(1), f"{text} is {value!r}"


def run_prompt(source):
    statements = [s for s in re.findall(r"^> (.*)\n((?:(?!> |\$ ).*\n)*)", source, flags=re.M) if not s[0].startswith("?")]
    assert statements, "no statement found"
    script = "".join(f'{s}\nprintf("--\\n"):\n' for s, _ in statements)
    out = subprocess.run([command, "-"], input=script, capture_output=True, text=True, cwd=ROOT, check=True, timeout=60).stdout
    got = out.split("--\n")
    for (statement, printed), value in zip(statements, got):
        assert not printed or printed == value, f"{statement} prints {value!r}, not {printed!r}"


def run_script(source):
    run = subprocess.run([command, "-"], input=source, capture_output=True, text=True, cwd=ROOT, timeout=60)
    assert run.returncode == 0, run.stderr


def run_cpp(source):
    includes = "".join(line + "\n" for line in source.splitlines() if line.startswith("#include"))
    body = "".join(line + "\n" for line in source.splitlines() if not line.startswith("#include"))
    if "int main(" not in source:
        body = ("int main() {\nstd::vector<double> rain = {7, 11.2, 36.6, 45.5, 67}, w = {1, 1, 2, 1, 1};\n" + body + "}\n")
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder, "snippet.cpp")
        path.write_text("#include <vector>\n" + includes + body)
        program = str(Path(folder, "snippet"))
        built = subprocess.run([compiler, "-std=c++20", "-w", f"-I{include}", str(path), f"-L{library}", "-lvexel", "-lvexelc",
                                f'-DSTATISTICS_LIBRARY="{library}/libstats_hw.so"', f"-Wl,-rpath,{library}", "-o", program],
                               capture_output=True, text=True)
        assert built.returncode == 0, built.stderr[:3000]
        ran = subprocess.run([program], capture_output=True, text=True, timeout=60)
        assert ran.returncode == 0, ran.stderr


def runner(language, source):
    if language == "" and source.startswith("$ "):
        return run_prompt
    return {"python": run_python, "cpp": run_cpp, "": run_script}.get(language)


def main():
    sys.path.insert(0, package)
    os.environ["PATH"] = f"{Path(command).parent}{os.pathsep}{os.environ['PATH']}"
    os.chdir(ROOT)
    failed = ran = 0
    for page in ["README.md", "docs/embedding.md", "docs/command.md"]:
        for language, source in blocks(page):
            if run := runner(language, source):
                ran += 1
                try:
                    run(source)
                except Exception as error:  # each block is told, then the next one runs
                    failed += 1
                    print(f"{page}: {type(error).__name__}: {error}\nin\n{source}")
    print(f"{ran} snippets, {failed} failed")
    return 1 if failed or not ran else 0


sys.exit(main())
