"""Files of figures as a bench could have written them, with any distribution."""
import json
import random
import sys
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

HOST = {"name": "one", "processor": "slow", "cores": 2}
FLOOR = "floor: there and back"


def figure(name, parts, bound=0.0, **more):
    parts = list(parts)
    ordered = sorted(parts)
    p50 = ordered[len(parts) // 2]
    return {"name": name, "count": 100 * len(parts), "minUs": ordered[0], "p50Us": p50, "p95Us": ordered[-1],
            "p99Us": ordered[-1], "p50BoundUs": bound, "p99BoundUs": 0.0, "partP50Us": parts,
            "quantilesUs": [[0, ordered[0]], [0.5, p50], [0.99, ordered[-1]], [1, 3 * ordered[-1]]], **more}


def rounds(seed, us, count=20, spread=0.05):
    chance = random.Random(seed)
    return [us * chance.lognormvariate(0, spread) for _ in range(count)]


def number(name, value):
    return {"name": name, "perSecond": value, "leastPerSecond": 700}


def run(figures, host=HOST, **more):
    return {"when": "2026-11-23 04:05 UTC", "commit": "abcdef0123", "host": host, "figures": figures, **more}


def file(folder, name, content):
    path = Path(folder) / name
    path.write_text(content if isinstance(content, str) else json.dumps(content), encoding="utf-8")
    return path
