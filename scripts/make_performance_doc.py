#!/usr/bin/env python3
"""Usage: scripts/make_performance_doc.py. Writes the figures of docs/performance.md anew from build/bench-1920x1080.json,
build/bench-3840x2160.json, build/bench-1920x1080-AVX2.json and build/bench-1920x1080-SSE4.json, which scripts/bench.sh makes.
What stands outside of its marks is left alone."""
import json
import math
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "performance.md"


def read(size):
    """The quickest run of everything, in milliseconds, by name."""
    runs = json.loads((ROOT / "build" / f"bench-{size}.json").read_text())["benchmarks"]
    times = {}
    for run in runs:
        if run["run_type"] == "iteration":
            times[run["run_name"]] = min(run["real_time"], times.get(run["run_name"], math.inf))
    return times


def effects(times):
    return {name: time for name, time in times.items() if re.match(r"\d", name)}


def mean(times):
    logs = [math.log(time / times["memcpy"]) for time in effects(times).values()]
    return math.exp(sum(logs) / len(logs))


def rate(milliseconds):
    return f"{1000 / milliseconds:.0f}"


def vectors(hd):
    """How machines fare that have no more than these vectors."""
    yield "| vectors, at 1920 by 1080 | geometric mean | slowest | effects above 8 ms | above 16.7 ms |"
    yield "| --- | --- | --- | --- | --- |"
    for name, times in (("AVX-512", hd), ("AVX2", read("1920x1080-AVX2")), ("SSE4", read("1920x1080-SSE4"))):
        all_times = effects(times)
        slowest = max(all_times, key=all_times.get)
        above = [sum(t > limit for t in all_times.values()) for limit in (8, 16.7)]
        yield f"| {name} | {mean(times):.2f} x memcpy | {slowest} {all_times[slowest]:.1f} ms | {above[0]} | {above[1]} |"
    yield ""


def figures(hd, uhd):
    slowest = sorted(effects(hd).items(), key=lambda item: -item[1])
    yield "| | 1920 by 1080 | 3840 by 2160 |"
    yield "| --- | --- | --- |"
    yield f"| geometric mean of {len(slowest)} effects | {mean(hd):.2f} x memcpy | {mean(uhd):.2f} x memcpy |"
    for limit in (8, 16.7):
        yield (f"| effects above {limit:g} ms | {sum(t > limit for t in effects(hd).values())} | "
               f"{sum(t > limit for t in effects(uhd).values())} |")
    yield (f"| `memcpy` of the frame, final blend | {hd['memcpy']:.2f} ms, {hd['AlphaBlendFrame']:.2f} ms | "
           f"{uhd['memcpy']:.2f} ms, {uhd['AlphaBlendFrame']:.2f} ms |")
    yield ""
    yield from vectors(hd)
    yield "| effect | frames a second at 1080p | ms | frames a second at 4K | ms |"
    yield "| --- | --- | --- | --- | --- |"
    for name, time in slowest:
        yield f"| {name} | {rate(time)} | {time:.2f} | {rate(uhd[name])} | {uhd[name]:.2f} |"


def main():
    hd, uhd = read("1920x1080"), read("3840x2160")
    text = "\n".join(figures(hd, uhd)) + "\n"
    page = PAGE.read_text()
    begin, end = "<!-- figures: scripts/make_performance_doc.py -->\n", "<!-- end of figures -->\n"
    head, rest = page.split(begin)
    tail = rest.split(end)[1]
    PAGE.write_text(head + begin + text + end + tail)


if __name__ == "__main__":
    main()
