"""The C++ examples of docs/functions: each page's blocks are compiled into one program and run.

A line that prints is followed by a comment with what it prints.  Blocks of a page are joined in order;
`#include` lines go to the top, a block with a `main` of its own is a program of its own.

    function_examples.py COMPILER INCLUDE_DIR LIBRARY_DIR PAGE...
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

HEAD = "#include <cmath>\n#include <cstdio>\n#include <vector>\n#include <random>\n#include <string>\n"


def programs(page):
    """(source, expected lines) of a page."""
    blocks = re.findall(r"^```cpp\n(.*?)^```", page.read_text(), flags=re.M | re.S)
    joined = [b for b in blocks if "int main(" not in b]
    for source in [b for b in blocks if "int main(" in b] + (["".join(joined)] if joined else []):
        lines = source.splitlines()
        expected = [m.group(1) for line in lines if (m := re.search(r'(?:print|\)\));?.*;\s+// (.*)$', line))]
        if "int main(" in source:
            yield source, expected
            continue
        includes = [line for line in lines if line.startswith("#include")]
        body = [line for line in lines if not line.startswith("#include")]
        yield HEAD + "\n".join(includes) + "\nnamespace vx = vexel;\nint main() {\n" + "\n".join(body) + "\n}\n", expected


def main():
    compiler, include, library, *pages = sys.argv[1:]
    failed = 0
    for page in map(Path, pages):
        for source, expected in programs(page):
            with tempfile.TemporaryDirectory() as folder:
                path = Path(folder, "example.cpp")
                path.write_text(source)
                program = Path(folder, "example")
                built = subprocess.run([compiler, "-std=c++20", "-O0", "-w", f"-I{include}", str(path), f"-L{library}",
                                        "-lvexel", f"-Wl,-rpath,{library}", "-o", str(program)], capture_output=True, text=True)
                if built.returncode:
                    print(f"{page}: does not compile\n{built.stderr[:3000]}")
                    failed += 1
                    continue
                run = subprocess.run([str(program)], capture_output=True, text=True, timeout=60)
                if run.returncode or run.stdout.splitlines() != expected:
                    print(f"{page}: status {run.returncode}\nprinted  {run.stdout.splitlines()}\nexpected {expected}\n{run.stderr}")
                    failed += 1
    return 1 if failed else 0


sys.exit(main())
