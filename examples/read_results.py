#!/usr/bin/env python3
"""Results of boards as a table: read_results.py FILE.json...; 0 when all of them passed."""
import json
import sys

failed = 0
for path in sys.argv[1:]:
    try:
        with open(path, encoding="utf-8") as file:
            result = json.load(file)
    except (OSError, ValueError) as problem:  # no run has come to its end
        print(f"{path}: {problem}")
        failed += 1
        continue
    adapter = (result["port"] or {}).get("adapter", {})
    line = [path, result["verdict"], f'{result["seconds"]:.1f} s', f'try {len(result["tries"])}',
            adapter.get("serial_number") or "-"]
    if result["verdict"] != "passed":
        failed += 1
        line.append(f'{result["stage"]}: {"; ".join(result["errors"])}')
    print("  ".join(line))
sys.exit(1 if failed else 0)
