"""Prints Class.method of each unittest method that a file defines, without importing it (its settings exist only while
tests run)."""

import ast
import sys

for node in ast.parse(open(sys.argv[1], encoding="utf-8").read()).body:
    if isinstance(node, ast.ClassDef):
        for method in node.body:
            if isinstance(method, ast.FunctionDef) and method.name.startswith("test"):
                print(f"{node.name}.{method.name}")
