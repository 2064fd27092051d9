#!/usr/bin/env python3
"""Makes the table of ratios from the benchmarks' output.

usage: bench-table.py TIMES.json FIRSTTEXT [DOCUMENT PROFILE]
The table replaces what is between its markers in DOCUMENT, and so does the content of the file PROFILE unless that is
empty. Peers that were not built have no entries.
"""
import json
import os
import statistics
import sys


class Times:
    """Medians by name of the measurement, in microseconds (memory: bytes). None for what was not measured."""

    def __init__(self, times_file, first_text_file):
        samples = {}
        with open(times_file, encoding="utf-8") as file:
            report = json.load(file)
        for run in report["benchmarks"]:
            if run["run_type"] != "iteration" or run.get("error_occurred"):
                continue
            name = run["run_name"].replace("/iterations:200/manual_time", "")
            scale = {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}[run["time_unit"]]
            samples.setdefault(name, []).append(run["real_time"] * scale)
            for counter in ("worst_us", "box_width", "box_height"):
                if counter in run:
                    samples.setdefault(f"{name} {counter}", []).append(run[counter])
        with open(first_text_file, encoding="utf-8") as file:
            for line in file:
                name, value = line.rsplit(maxsplit=1)
                samples.setdefault(name, []).append(float(value))
        self.medians = {name: statistics.median(values) for name, values in samples.items()}
        self.context = report["context"]
        self.repetitions = max(len(values) for name, values in samples.items() if name.startswith("MemcpyOfText"))

    def __call__(self, name):
        return self.medians.get(name)


class Row:
    """A line of the table: the library's figure, those of its peers, and the limits for the library's."""

    def __init__(self, work, own, peers, goal, limits, show=None):
        self.work = work
        self.own = own
        self.peers = [(name, value) for name, value in peers if value is not None]
        self.goal = goal
        self.limits = [(value, factor) for value, factor in limits if value is not None]
        self.show = show or duration

    def verdict(self):
        if self.own is None or not self.limits:
            return "not measured"
        return "met" if all(self.own <= value * factor for value, factor in self.limits) else "missed"

    def cells(self):
        own = "-" if self.own is None else self.show(self.own)
        peers = "; ".join(f"{name} {self.show(value)}: {ratio(self.own, value)}" for name, value in self.peers)
        return [self.work, own, peers or "-", self.goal, self.verdict()]


def ratio(own, value):
    return "-" if own is None or not value else f"**{own / value:.2f}**"


def duration(microseconds):
    if microseconds >= 1e4:
        return f"{microseconds / 1e3:.0f} ms"
    return f"{microseconds:.3g} µs" if microseconds < 1000 else f"{microseconds / 1e3:.2f} ms"


def size(number):
    return f"{number / 1e6:.2f} MB"


SIZES = [("480p", "854/480"), ("720p", "1280/720"), ("1080p", "1920/1080"), ("2160p", "3840/2160")]


def steady_rows(t):
    rows = []
    for label, args in SIZES:
        floor = t(f"MemcpyOfText/{args}")
        rows.append(Row(f"steady frame, {label}, opaque", t(f"SteadyText/{args}/255"),
                        [("floor", floor), ("libass merged", t(f"AssSteadyMerged/{args}")),
                         ("libass list", t(f"AssSteadyList/{args}")),
                         ("FFmpeg's filter", t(f"FilterSteadyText/{args}"))],
                        "at most 1.0 × floor", [(floor, 1)]))
        rows.append(Row(f"steady frame, {label}, opacity 128", t(f"SteadyText/{args}/128"), [("floor", floor)],
                        "at most 1.5 × floor", [(floor, 1.5)]))
    for label, args in [("720x576", "720/576"), *SIZES[2:]]:
        floor = t(f"MemcpyOfPicture/{args}")
        rows.append(Row(f"steady frame, bitmap of 720x576 at {label}", t(f"SteadyPicture/{args}"),
                        [("floor", floor), ("FFmpeg's overlay", t(f"FilterSteadyPicture/{args}"))],
                        "at most 1.5 × floor", [(floor, 1.5)]))
    return rows


def change_rows(t):
    rows = []
    for label, args in SIZES:
        for kind, counter, goal, factor in (("mean", "", "at most 0.5 × libass", 0.5),
                                            ("worst", " worst_us", "below libass", 1)):
            peer = t(f"AssChange/{args}/0{counter}")
            rows.append(Row(f"frame on which the cue changes, {label}, {kind} of 200",
                            t(f"TextChange/{args}/0{counter}"), [("libass list", peer)], goal, [(peer, factor)]))
    for script, name in (("1", "Chinese"), ("2", "Arabic"), ("3", "Hindi")):
        for label, args in SIZES:
            peer = t(f"AssChange/{args}/{script}")
            rows.append(Row(f"the same, two long lines of {name}, {label}, mean of 200",
                            t(f"TextChange/{args}/{script}"), [("libass list", peer)], "below libass", [(peer, 1)]))
    for label, args, goal in (("720x576", "720/576", 400), ("1080p", "1920/1080", 1200)):
        rows.append(Row(f"frame on which a bitmap of 720x576 changes, {label}, mean of 200", t(f"PictureChange/{args}"),
                        [("memcpy of the frame", t(f"MemcpyOfFrame/{args}"))], f"at most {goal / 1000} ms",
                        [(goal, 1)]))
    peer = t("AssNothingDue/1920/1080")
    rows.append(Row("nothing due", t("NothingDue/1920/1080"), [("libass", peer)], "at most 0.5 × libass", [(peer, 0.5)]))
    return rows


def format_rows(t):
    rows = []
    formats = ((0, "yuv420p", 0.7), (1, "nv12", 0.7), (2, "p010", 1.3))
    for number, name, goal in formats:
        for label, args in SIZES[2:]:
            rgb = t(f"SteadyText/{args}/255")
            merged = t(f"AssSteadyFrame/{args}/{number}")
            rows.append(Row(f"steady frame in {name}, {label}, opaque", t(f"SteadyFrame/{args}/{number}/255"),
                            [("RGB24", rgb), ("libass merged", merged)],
                            f"at most {goal} × RGB24, below 0.5 × libass", [(rgb, goal), (merged, 0.5)]))
    for number, name in ((0, "yuv420p"), (1, "nv12"), (2, "p010"), (3, "rgb24")):
        for label, args in SIZES[2:]:
            floor = t(f"MemcpyOfText/{args}")
            rows.append(Row(f"steady frame in {name}, {label}, opacity 128", t(f"SteadyFrame/{args}/{number}/128"),
                            [("floor", floor), ("RGB24", t(f"SteadyText/{args}/128"))],
                            "at most 1.5 × floor", [(floor, 1.5)]))
            floor = t(f"MemcpyOfPicture/{args}")
            rows.append(Row(f"steady frame in {name}, bitmap of 720x576 at {label}",
                            t(f"SteadyFramePicture/{args}/{number}"),
                            [("floor", floor), ("RGB24", t(f"SteadyPicture/{args}"))],
                            "at most 1.5 × floor", [(floor, 1.5)]))
    for number, name, _ in formats:
        for label, args in SIZES[2:]:
            rgb = t(f"TextChange/{args}/0")
            rows.append(Row(f"frame in {name} on which the cue changes, {label}, mean of 200",
                            t(f"FrameChange/{args}/{number}"),
                            [("RGB24", rgb), ("libass merged", t(f"AssFrameChange/{args}/{number}"))],
                            "at most 1.25 × RGB24", [(rgb, 1.25)]))
    return rows


def natural_rows(t):
    rows = []
    for number, name in ((3, "RGB24"), (0, "yuv420p")):
        for label, args in SIZES:
            floor = t(f"MemcpyOfText/{args}")
            rows.append(Row(f"steady frame in {name}, natural look, {label}", t(f"NaturalSteady/{args}/{number}"),
                            [("floor", floor)], "at most 1.5 × floor", [(floor, 1.5)]))
    for label, args in SIZES:
        peer = t(f"AssChange/{args}/0")
        rows.append(Row(f"frame in RGB24 on which the cue changes, natural look, {label}, mean of 200",
                        t(f"NaturalChange/{args}/3"), [("libass list", peer)], "below libass", [(peer, 1)]))
    for label, args in SIZES[2:]:
        peer = t(f"AssFrameChange/{args}/0")
        rows.append(Row(f"frame in yuv420p on which the cue changes, natural look, {label}, mean of 200",
                        t(f"NaturalChange/{args}/0"), [("libass merged", peer)], "below libass", [(peer, 1)]))
    for number, name in ((3, "RGB24"), (0, "yuv420p")):
        peer = t(f"NaturalSameText/1280/720/{number}")
        rows.append(Row(f"the same in {name} with text of 32 points, 2160p", t(f"NaturalSameText/3840/2160/{number}"),
                        [("720p", peer)], "at most 1.25 × 720p", [(peer, 1.25)]))
    return rows


def file_rows(t):
    few, many = t("Lookup/1500"), t("Lookup/100000")
    rows = [Row("lookup, 100,000 cues, random times", many,
                [("libass", t("AssLookup/100000")), ("with 1,500 cues", few)],
                "below 1 µs and at most 3 × with 1,500", [(1, 1), (few, 3)])]
    for label, cues in (("1,500", 1500), ("100,000", 100000)):
        peer = t(f"AssOpen/{cues}")
        rows.append(Row(f"open {label} cues, SRT", t(f"OpenSrt/{cues}"),
                        [("libass, the same as ASS", peer), ("FFmpeg, demux and decode", t(f"FfmpegOpenSrt/{cues}"))],
                        "below libass", [(peer, 1)]))
        rows.append(Row(f"open {label} cues, ASS", t(f"OpenAss/{cues}"), [("libass", peer)], "below libass", [(peer, 1)]))
    peer = t("AssRead/1500")
    rows.append(Row("open 1,500 cues, SRT, on a new handle", t("OpenOnNewHandle/1500/manual_time"),
                    [("libass, the same as ASS in memory", peer)], "below libass", [(peer, 1)]))
    return rows


def process_rows(t):
    peer = t("libass first")
    rows = [Row("first text of the process, file open", t("library first"),
                [("libass", peer), ("a later change of cue", t("library later"))], "below libass", [(peer, 1)])]
    peer = t("libass start")
    rows.append(Row("fresh process: create, open 200 cues, first frame with text", t("library start"),
                    [("libass", peer)], "below libass", [(peer, 1)]))
    needed = t("library memory needed")
    rows.append(Row("memory of a renderer at 1080p", t("library memory first"),
                    [("4 × W × H and the cues", needed), ("libass", t("libass memory first")),
                     ("a second renderer", t("library memory another"))],
                    "at most 1.5 × what is needed", [(needed, 1.5)], size))
    return rows


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        names = [line.split(":", 1)[1].strip() for line in file if line.startswith("model name")]
    return names[0] if names else "unknown processor"


def table(t):
    lines = ["| work | here | peer: ratio | goal | |", "|---|---|---|---|---|"]
    for row in steady_rows(t) + change_rows(t) + format_rows(t) + natural_rows(t) + file_rows(t) + process_rows(t):
        lines.append("| " + " | ".join(row.cells()) + " |")
    third = [cache["size"] >> 20 for cache in t.context["caches"] if cache["level"] == 3]
    third = f", L3 {third[0]} MB" if third else ""
    box = f"{t('MemcpyOfText/1920/1080 box_width'):.0f}x{t('MemcpyOfText/1920/1080 box_height'):.0f}"
    lines += ["", f"{processor()}, {os.cpu_count()} cores{third}; {t.context['date'][:10]}; medians of "
              f"{t.repetitions} repetitions. Ink box at 1080p: {box}."]
    return "\n".join(lines)


def replace_part(document, name, text):
    """Replaces the text between the markers of that name."""
    begin = f"<!-- {name}: written by scripts/bench.sh --document -->\n"
    end = f"<!-- end of {name} -->"
    before, rest = document.split(begin)
    return before + begin + text.rstrip() + "\n" + end + rest.split(end)[1]


def main():
    text = table(Times(sys.argv[1], sys.argv[2]))
    print(text)
    if len(sys.argv) > 4:
        with open(sys.argv[3], encoding="utf-8") as file:
            document = replace_part(file.read(), "table", text)
        with open(sys.argv[4], encoding="utf-8") as file:
            profile = file.read()
        if profile:
            document = replace_part(document, "profile", profile)
        with open(sys.argv[3], "w", encoding="utf-8") as file:
            file.write(document)


main()
