#!/usr/bin/python3
"""Runs the benchmarks and prints one table; with --peers also what other programs take for the same work.

    table.py BUILD_FOLDER [--peers] [--smoke]

--smoke runs each benchmark at its smallest size only and looks at nothing but that it runs.
"""
import json
import math
import os
import statistics
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
PYTHON = "/usr/bin/python3"
JARS = ["/usr/share/java/%s.jar" % name for name in ("poi", "commons-collections4", "commons-codec", "commons-math3")]

# What is to be reached: times the floor, at the largest size (of a compaction: with so many patches).
TARGETS = {"R1": 2.5, "R2": 2.5, "R3": 3, "E1": 1.5, "E2": 1.2, "I1": 1.5, "W1": 2, "W2": 2, "walk": 1.2,
           "compaction/0": 2, "compaction/1000": 2, "compaction/100000": 4}
FLOORS = {"R1": "to_chars", "R2": "to_chars", "R3": "copies in allocations", "E1": "read, copy, write, fsync",
          "E2": "1,000 half walks, and E1's", "I1": "a walk, and E1's", "W1": "copy, write, fsync",
          "W2": "copy, write, fsync", "walk": "chase of headers", "compaction": "memcpy"}

# Of each piece of work: the file that ours and the others read, and who else does it.
JOBS = {"R1": ("numbers_xlwt", ("event", "workbook", "xlrd", "xls2csv")),
        "R2": ("integers_xlwt", ("event", "workbook", "xlrd", "xls2csv")),
        "R3": ("texts_xlwt", ("event", "workbook", "xlrd", "xls2csv")),
        "E1": ("numbers_xlwt", ("workbook",)), "E2": ("mixed_xlwt", ("workbook",)),
        "I1": ("numbers_poi", ("workbook",)), "W1": ("", ("workbook", "xlwt")), "W2": ("", ("workbook", "xlwt"))}
NAMES = {"event": "POI, event reader", "workbook": "POI, workbook", "xlrd": "xlrd", "xlwt": "xlwt", "xls2csv": "xls2csv"}
# Times faster than a peer that are to be reached.
FASTER = {("R1", "event"): 2, ("R1", "workbook"): 6, ("R1", "xlrd"): 10, ("R2", "event"): 1, ("R3", "event"): 3,
          ("R3", "workbook"): 3, ("R3", "xlrd"): 3, ("E1", "workbook"): 15, ("E2", "workbook"): 3,
          ("I1", "workbook"): 15, ("W1", "workbook"): 10, ("W1", "xlwt"): 10, ("W2", "workbook"): 10, ("W2", "xlwt"): 10}
OWN_TEXTS = "texts"  # shared strings as the library reads them: in one record
REPEATS = 5
PROCESSES = 3


def run_benchmarks(build, files, extra=()):
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([os.path.join(build, "bench", "workbook_bench"), "--benchmark_out=" + out.name, "--benchmark_out_format=json",
                        *extra], check=True, stdout=subprocess.DEVNULL,
                       env=dict(os.environ, TOLVENAR_BENCH_FILES=files))
        return json.load(open(out.name))["benchmarks"]


def milliseconds(seconds):
    return "%.3f" % (seconds * 1e3) if seconds < 0.01 else "%.1f" % (seconds * 1e3)


def line(*columns):
    print("| " + " | ".join(str(column) for column in columns) + " |")


def head(*columns):
    line(*columns)
    line(*("---" for _ in columns))


def slopes(times, sizes):
    """How fast the time grows from size to size: 1 is linear."""
    return ", ".join("%.2f" % (math.log(b[1] / a[1]) / math.log(b[0] / a[0])) for a, b in zip(zip(sizes, times), zip(sizes[1:], times[1:])))


def print_floors(results):
    by_name = {}
    untouched = [result["resident"] for result in results if "resident" in result]
    results = [result for result in results if "resident" not in result]
    for result in results:
        name, size = result["name"].split("/")[:2]
        if result.get("error_occurred"):
            sys.exit("%s: %s" % (result["name"], result["error_message"]))
        by_name.setdefault(name, []).append((int(size), result))
    print("Medians of %d or more, work and floor by turns; ms of the processor's time for R, walk and compaction, ms that pass for E, I and W." %
          min(int(result["samples"]) for result in results))
    print()
    head("work", "size", "ms", "floor", "ms", "ratio", "of the processor's time", "reach", "growth")
    for name, runs in by_name.items():
        times, sizes = [run["work"] for _, run in runs], [size for size, _ in runs]
        for size, run in runs:
            last = size == sizes[-1]
            target = TARGETS.get("%s/%d" % (name, size), TARGETS.get(name) if last else None)
            growth = slopes(times, sizes) if last and len(sizes) == 3 and name != "compaction" else ""
            floor = "read" if name.endswith("from the file") else FLOORS[name.split(" ")[0]]
            line(name, size, milliseconds(run["work"]), floor, milliseconds(run["floor"]), "%.2f" % run["ratio"],
                 "%.2f" % (run["work_cpu"] / run["floor_cpu"]), "" if target is None else "at most %g" % target, growth)
    print()
    print("The pool's nine slots with one small block taken: %.0f KB of memory in use." % (max(untouched) / 1024))


def peer_command(peer, build, job, source, target):
    if peer == "ours":
        return [os.path.join(build, "bench", "bench_once"), job, source, target]
    if peer in ("event", "workbook"):
        return ["java", "-cp", ":".join([os.path.join(build, "peers")] + JARS), "PoiPeer", peer, job, source, target]
    if peer == "xls2csv":
        return ["xls2csv", source]
    return [PYTHON, "-B", os.path.join(HERE, "peers", "python_peers.py"), peer, job, source, target]


def process_cost(command):
    """Seconds and peak memory in MB of a whole process."""
    runs = []
    for _ in range(PROCESSES):
        process = subprocess.Popen(["/usr/bin/python3", "-c", MEASURE] + command, stdout=subprocess.PIPE)
        runs.append([float(word) for word in process.communicate()[0].split()])
        if process.returncode != 0:
            sys.exit("failed: " + " ".join(command))
    return statistics.median(run[0] for run in runs), max(run[1] for run in runs)


# In a process of its own, whose only child is the one that is measured.
MEASURE = """
import resource, subprocess, sys, time
begin = time.perf_counter()
status = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL).returncode
print(time.perf_counter() - begin, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024)
sys.exit(status)
"""


def measure_peer(peer, build, job, source, target):
    """In-process seconds, the processor's, whole process's seconds, peak MB; None where there is nothing to measure."""
    command = peer_command(peer, build, job, source, target)
    if peer == "xls2csv":
        return (None, None) + process_cost(command)
    warm_ups = {"event": 5, "workbook": 3}.get(peer, 1)
    out = subprocess.run(command + [str(warm_ups), str(REPEATS)], check=True, stdout=subprocess.PIPE).stdout.decode()
    times = [[float(word) for word in row.split()] for row in out.splitlines()]
    median, cpu = (statistics.median(column) for column in zip(*times))
    return (median, cpu) + process_cost(command + ["0", "1"])


def print_peers(build, files):
    print()
    print("Whole work from file to file, or from the file to the values, on the same files. In process: median of %d behind a warm-up. Whole process: median of %d." %
          (REPEATS, PROCESSES))
    print()
    head("work", "by", "in process, ms", "of the processor, ms", "whole process, ms", "peak, MB", "ours is faster, in process", "by the processor's time",
         "reach")
    with tempfile.TemporaryDirectory() as folder:
        target = os.path.join(folder, "out.xls")
        for job, (source, peers) in JOBS.items():
            path = os.path.join(files, source + ".xls")
            own_path = os.path.join(files, OWN_TEXTS + ".xls") if job == "R3" else path
            own = measure_peer("ours", build, job, own_path, target)
            print_cost(job, "Tolvenar", own, own, None)
            for peer in peers:
                print_cost(job, NAMES[peer], measure_peer(peer, build, job, path, target), own, FASTER.get((job, peer)))


def print_cost(job, name, cost, own, reach):
    median, cpu, whole, peak = cost
    if median is None:
        faster = ("%.1f x, whole process" % (whole / own[2]), "")
    else:
        faster = ("", "") if cost is own else ("%.1f x" % (median / own[0]), "%.1f x" % (cpu / own[1]))
    in_process = ("", "") if median is None else (milliseconds(median), milliseconds(cpu))
    line(job, name, *in_process, milliseconds(whole), "%.0f" % peak, *faster, "%g x" % reach if reach else "")
    sys.stdout.flush()


def make_files(build, files):
    os.makedirs(files, exist_ok=True)
    subprocess.run([os.path.join(build, "bench", "bench_once"), "make", files], check=True)
    if not os.path.exists(os.path.join(files, "mixed_xlwt.xls")):
        subprocess.run([PYTHON, "-B", os.path.join(HERE, "peers", "python_peers.py"), "make", files], check=True)


def compile_poi(build):
    missing = [jar for jar in JARS if not os.path.exists(jar)]
    if missing:
        sys.exit("Apache POI is not there: scripts/install-packages peers installs it (missing: %s)" % " ".join(missing))
    subprocess.run(["javac", "-cp", ":".join(JARS), "-d", os.path.join(build, "peers"), os.path.join(HERE, "peers", "PoiPeer.java")], check=True)


def make_poi_file(build, files):
    path = os.path.join(files, "numbers_poi.xls")
    if not os.path.exists(path):
        subprocess.run(["java", "-cp", ":".join([os.path.join(build, "peers")] + JARS), "PoiPeer", "make", path], check=True)


def main():
    build, flags = sys.argv[1], sys.argv[2:]
    files = os.path.join(build, "files")
    if "--smoke" in flags:
        run_benchmarks(build, files, ("--benchmark_filter=^(R1|R2|R3|E1|E2|I1|W1|W2|walk)/(50|100|650)/",))
        print("every benchmark ran at its smallest size")
        return
    make_files(build, files)
    print_floors(run_benchmarks(build, files))
    sys.stdout.flush()
    if "--peers" in flags:
        compile_poi(build)
        make_poi_file(build, files)
        print_peers(build, files)


if __name__ == "__main__":
    main()
