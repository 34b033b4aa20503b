#!/usr/bin/env python3
"""Runs all benchmarks of a build and prints one table. Called by scripts/bench.sh, which builds first."""

import argparse
import json
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

SYSTEM_PATH = os.pathsep.join((os.environ.get("PATH", ""), "/usr/sbin"))
BENCH = pathlib.Path(__file__).resolve().parent
DOCS = BENCH.parent / "docs" / "performance.md"

# How the lines come in: bytes a read, gates in rotation, and what that is.
READS = ((4096, 300, "4 KiB reads, 300 gates"), (112, 8, "112-byte reads, 8 gates"))
HANDLERS = ("no handlers", "decision only", "all handlers")
IDLE = ("OPEN, acknowledged", "OPEN, with `OnCheckStatus`", "NEW, unanswered")
IDLE_NETWORKED = ("OPEN", "OPEN, with `OnCheckStatus`", "NEW, host undecided")
JOBS = ("off", "on", "on, with `OnCheckStatus`")
CONNECTOR = (("PingsReceived", "pings received, answered and routed"),
             ("CardsReceived", "card lines received and routed"),
             ("RelayCommandsSent", "relay commands sent"),
             ("DisplayCommandsSent", "lines of display commands sent"))
SCALES = (("silent", "nobody says anything"), ("unpolled", "no polling, two talk by themselves"),
          ("polled", "polled every {interval_ms} ms"))
COFFEE = (("CoffeeTexts", "texts"), ("BareBlocks/kept:0", "bare blocks, a cipher context each"),
          ("BareBlocks/kept:1", "bare blocks, one cipher context"))
PANEL = (("GatesBuilt/gates:500", "500 gates built and drawn"),
         ("BoxScrolled/gates:500", "500 gates scrolled by one and drawn"),
         ("StatesShown/gates:500", "state shown among 500 gates and drawn"),
         ("GatesSelected/gates:500", "gate selected among 500 and drawn"),
         ("IniWrittenAndRead/gates:10000", "ini file of 10,000 gates written and read"))
FRAME_MS = 16.7


def progress(text):
    print(f"* {text}", file=sys.stderr, flush=True)


class Runner:
    def __init__(self, build, effort):
        self.bin = build / "bench"
        self.modules = build / "peers" / "node_modules"
        self.effort = effort
        peers = effort != "smoke"
        self.has_npm = peers and shutil.which("node") is not None and (self.modules / "serialport").is_dir()
        self.has_pyserial = peers and subprocess.run(["/usr/bin/python3", "-c", "import serial"], check=False,
                                                     stderr=subprocess.DEVNULL).returncode == 0
        self.has_mosquitto = peers and shutil.which("mosquitto", path=SYSTEM_PATH) is not None
        self.has_modbus = peers and (self.bin / "modbus_frames").exists()

    def amount(self, smoke, quick, full):
        """What the chosen effort takes of three amounts."""
        return {"smoke": smoke, "quick": quick, "full": full}[self.effort]

    def missing(self):
        """Names of the peers that are not there to be compared with."""
        peers = (("npm serialport", self.has_npm), ("pyserial", self.has_pyserial),
                 ("libmodbus", self.has_modbus), ("mosquitto", self.has_mosquitto))
        return [name for name, there in peers if not there]

    def lines(self, *command):
        """Output of a program, line by line; its failure ends the run."""
        environment = dict(os.environ, NODE_PATH=str(self.modules), PATH=SYSTEM_PATH)
        done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, text=True,
                              env=environment, check=False)
        if done.returncode != 0:
            sys.exit(f"{command[0]} failed ({done.returncode})\n{done.stdout}")
        return done.stdout

    def latency(self):
        cards = self.amount(5, 300, 2000)
        progress(f"card to command over pseudo-terminals, {cards} cards each")
        programs = [f"floor={self.bin / 'latency_floor'}",
                    f"component={self.bin / 'latency_gate'}",
                    f"networked={self.bin / 'latency_d24_gate'}"]
        if self.has_pyserial:
            programs.append(f"pyserial=/usr/bin/python3 {BENCH / 'peers' / 'pyserial_gate.py'}")
        if self.has_npm:
            programs.append(f"serialport=node {BENCH / 'peers' / 'serialport_gate.js'}")
        output = self.lines(self.bin / "latency", cards, *programs)
        return {row["name"]: row for row in map(json.loads, output.splitlines())}

    def watched_latency(self):
        """A quiet gate, and one with watchers, a journal and other lines: each alone, taking turns."""
        cards, rounds = self.amount((5, 1), (300, 2), (1000, 5))
        lines, watchers, deaf = self.amount((2, 10, 1), (199, 1000, 100), (199, 1000, 100))
        load = f"{self.bin / 'latency_watched_gate'} {lines} {watchers} {deaf}"
        found = {}
        for number in range(rounds):
            progress(f"card to command with {watchers} watchers and {lines} other lines, "
                     f"round {number + 1} of {rounds}")
            for program in (f"quiet={self.bin / 'latency_gate'}", f"watched={load}"):
                row = json.loads(self.lines(self.bin / "latency", cards, program))
                for key in ("median_us", "p99_us"):
                    found.setdefault((row["name"], key), []).append(row[key])
        return medians(found), f"{lines} other lines, {watchers} watchers of which {deaf} do not read, journal"

    def fanout(self):
        """Texts to many clients; the servers take turns."""
        programs = [f"component={self.bin / 'fanout_gate'}"]
        if self.has_mosquitto:
            programs.append(f"mosquitto=/usr/bin/python3 {BENCH / 'peers' / 'mosquitto_fanout.py'}")
        rounds, seconds = self.amount((1, 1), (1, 2), (3, 3))
        found = {}
        for number in range(rounds):
            for clients in self.amount((1, 10), (1, 10, 100, 1000), (1, 10, 100, 1000)):
                progress(f"one text to {clients} clients, round {number + 1} of {rounds}")
                for line in self.lines(self.bin / "fanout", clients, seconds, *programs).splitlines():
                    row = json.loads(line)
                    for key in ("texts_per_s", "cpu_us_per_delivery", "median_us", "p99_us"):
                        found.setdefault((clients, row["name"], key), []).append(row[key])
        return medians(found)

    def google(self, pattern, seconds, program="turnstile_bench"):
        output = self.lines(self.bin / program, f"--benchmark_filter={pattern}",
                            f"--benchmark_min_time={seconds}", "--benchmark_format=json")
        rows = json.loads(output)["benchmarks"]
        for row in rows:
            if row.get("error_occurred"):
                sys.exit(f"{row['name']}: {row['error_message']}")
        return rows

    def rates(self, read, addresses):
        """Median lines per second by way of handling, the programs taking turns."""
        rounds = self.amount(1, 2, 7)
        found = {}
        with tempfile.NamedTemporaryFile() as reads:
            self.lines(self.bin / "turnstile_bench", "--write-reads", read, addresses, reads.name)
            for number in range(rounds):
                progress(f"lines per second, {read}-byte reads, round {number + 1} of {rounds}")
                for row in self.google(f"CardLines/.*/read:{read}/", self.amount(0.001, 0.5, 0.5)):
                    handlers = HANDLERS[int(re.search(r"handlers:(\d)", row["name"])[1])]
                    found.setdefault(handlers, []).append(row["items_per_second"])
                if self.has_npm:
                    row = self.peer("node", BENCH / "peers" / "delimiter_rate.js", reads.name, 1)
                    found.setdefault("npm", []).append(row["linesPerSecond"])
        return medians(found)

    def peer(self, *command):
        return json.loads(self.lines(*command))

    def passes(self, program="turnstile_bench"):
        progress(f"cost of a pass over the table, {program}")
        costs = {}
        for row in self.google("StackPass", self.amount(0.001, 0.1, 0.5), program):
            idle, entries = map(int, re.search(r"idle:(\d)/entries:(\d+)", row["name"]).groups())
            costs[idle, entries] = row["per_entry"] * 1e9
        return costs

    def relays(self):
        """What a sweep costs a job, and the lines of boards a second."""
        progress("relays on time")
        costs, rates = {}, {}
        for row in self.google(".", self.amount(0.001, 0.1, 0.5), "switch_bench"):
            name, numbers = row["name"].split("/")[0], re.findall(r":(\d+)", row["name"])
            if name == "Sweep":
                costs[tuple(map(int, numbers))] = row["per_job"] * 1e9
            else:
                rates[name, int(numbers[0])] = row["items_per_second"]
        return costs, rates

    def connector(self):
        """Median rates of the connector and its peers, the programs taking turns."""
        rounds, seconds = self.amount((1, 0.001), (2, 0.1), (5, 0.25))
        found = {}
        for number in range(rounds):
            progress(f"line connector, round {number + 1} of {rounds}")
            for row in self.google(".", seconds, "connector_bench"):
                name, size = re.match(r"(\w+)/\w+:(\d+)", row["name"]).groups()
                rate = row.get("items_per_second", row.get("bytes_per_second"))
                found.setdefault((name, int(size)), []).append(rate)
            if self.has_npm:
                for boards in {size for name, size in found if name == CONNECTOR[0][0]}:
                    row = self.peer("node", BENCH / "peers" / "board_lines.js", boards, 1)
                    found.setdefault(("npm", boards), []).append(row["linesPerSecond"])
            if self.has_modbus:
                row = self.peer(self.bin / "modbus_frames", 1)
                found.setdefault(("modbus", 0), []).append(row["framesPerSecond"])
        return medians(found)

    def scales(self):
        """Median packets per second and allocations a packet, by family and whether there is a log."""
        rounds, seconds = self.amount((1, 0.001), (1, 0.1), (5, 0.25))
        rates, allocations = {}, {}
        for number in range(rounds):
            progress(f"packets of scales, round {number + 1} of {rounds}")
            for row in self.google("Packets", seconds, "scales_bench"):
                key = tuple(map(int, re.search(r"family:(\d+)/log:(\d)", row["name"]).groups()))
                rates.setdefault(key, []).append(row["items_per_second"])
                if allocations.setdefault(key, row["allocs/packet"]) != row["allocs/packet"]:
                    sys.exit(f"{row['name']}: not the same allocations in every run")
        return medians(rates), allocations

    def coffee(self):
        """Median texts and bare blocks per second, taking turns."""
        rounds, seconds = self.amount((1, 0.001), (2, 0.1), (5, 0.25))
        found = {}
        for number in range(rounds):
            progress(f"texts for the coffee machine, round {number + 1} of {rounds}")
            for row in self.google(".", seconds, "coffee_bench"):
                found.setdefault(row["name"], []).append(row["items_per_second"])
        return medians(found)

    def script(self):
        """Median time of a card decision, in us: in C++ and by a script."""
        rounds, seconds = self.amount((1, 0.001), (2, 0.1), (5, 0.5))
        found = {}
        for number in range(rounds):
            progress(f"decisions by a script, round {number + 1} of {rounds}")
            for row in self.google(".", seconds, "script_bench"):
                factor = {"ns": 1e-3, "us": 1}[row["time_unit"]]
                found.setdefault(row["name"], []).append(row["cpu_time"] * factor)
        return medians(found)

    def panel(self):
        """Median time of each thing that the panel does, in ms."""
        rounds, seconds = self.amount((1, 0.001), (2, 0.1), (5, 0.5))
        found = {}
        for number in range(rounds):
            progress(f"gate panel, round {number + 1} of {rounds}")
            for row in self.google(".", seconds, "panel_bench"):
                factor = {"us": 1e-3, "ms": 1}[row["time_unit"]]
                found.setdefault(row["name"], []).append(row["real_time"] * factor)
        return medians(found)

    def idle_scales(self):
        seconds, rounds = self.amount((1, 1), (2, 3), (5, 5))
        progress(f"eight scales with nothing to do, {rounds} × 3 × {seconds} s")
        return json.loads(self.lines(self.bin / "idle_scales", "--seconds", seconds, "--rounds", rounds))

    def ports(self):
        ports, seconds = self.amount((3, 1), (50, 3), (200, 10))
        progress(f"{ports} ports at full rate for {seconds} s")
        return json.loads(self.lines(self.bin / "many_ports", ports, seconds))


def medians(found):
    return {name: statistics.median(values) for name, values in found.items()}


def met(condition):
    return "yes" if condition else "**no**"


def table(head, rows):
    text = [head, ["---"] + ["---:"] * (len(head) - 1), *rows]
    return "\n".join("| " + " | ".join(row) + " |" for row in text)


def latency_table(latency):
    floor, ours = latency["floor"], latency["component"]
    peers = [latency[name] for name in ("pyserial", "serialport") if name in latency]
    rows = [[name, f"{row['median_us']:.0f} µs", f"{row['p99_us']:.0f} µs",
             f"{row['median_us'] / floor['median_us']:.2f}"]
            for name, row in latency.items()]
    aims = f"Aim: median at most 1.6 × floor: {met(ours['median_us'] <= 1.6 * floor['median_us'])}"
    if peers:
        faster = all(ours[key] < peer[key] for peer in peers for key in ("median_us", "p99_us"))
        others = "both other loops" if len(peers) == 2 else "the other loop"
        aims += f"; median and 99th percentile below {others}: {met(faster)}"
    head = ["Card to open command", "median", "99th percentile", "median / floor"]
    return table(head, rows) + f"\n\n{aims}."


def rate_table(results):
    rows = [[f"{title}: {'npm delimiter parser' if name == 'npm' else 'component, ' + name}",
             f"{rates[name]:,.0f}", f"{rates[name] / rates['npm']:.2f}" if "npm" in rates else "–"]
            for title, rates in results for name in (*HANDLERS, "npm") if name in rates]
    text = table(["Lines per second", "lines/s", "/ npm"], rows)
    aims = [f"{title}: {met(rates['no handlers'] >= rates['npm'])} and "
            f"{met(rates['all handlers'] >= rates['npm'] / 2)}" for title, rates in results if "npm" in rates]
    if aims:
        text += ("\n\nAim: without handlers at least the npm parser's rate, with all handlers at least half "
                 + "of it: " + "; ".join(aims) + ".")
    return text


def watched_table(times, load):
    keys = ("median_us", "p99_us")
    rows = [[name, *(f"{times[name, key]:.0f} µs" for key in keys),
             *(f"{times[name, key] / times['quiet', key]:.2f}" for key in keys)] for name in ("quiet", "watched")]
    text = table(["Card to open command", "median", "99th percentile", "median / quiet", "99th / quiet"], rows)
    within = [times["watched", key] <= limit * times["quiet", key] for key, limit in zip(keys, (1.5, 3))]
    return (text + f"\n\n*Watched*: {load}. Aim: median at most 1.5 × quiet: {met(within[0])}; "
            f"99th percentile at most 3 × quiet: {met(within[1])}.")


def fanout_table(found):
    names = [name for name in ("component", "mosquitto") if any(key[1] == name for key in found)]
    sizes = sorted({key[0] for key in found})
    rows = [[f"{name}, {clients:,} clients", f"{found[clients, name, 'texts_per_s']:,.0f}",
             f"{found[clients, name, 'cpu_us_per_delivery']:.2f} µs",
             f"{found[clients, name, 'median_us']:,.0f} µs", f"{found[clients, name, 'p99_us']:,.0f} µs"]
            for clients in sizes for name in names]
    text = table(["One text to all clients", "texts/s", "processor a delivery", "delay, median", "99th percentile"],
                 rows)
    if len(names) == 2:
        rate = all(found[size, "component", "texts_per_s"] >= found[size, "mosquitto", "texts_per_s"]
                   for size in sizes)
        most = sizes[-1]
        delay = found[most, "component", "p99_us"] <= found[most, "mosquitto", "p99_us"]
        text += (f"\n\nAim: at least mosquitto's rate: {met(rate)}; with {most:,} clients a 99th percentile no worse "
                 f"than its: {met(delay)}.")
    return text


def pass_table(title, columns, costs):
    sizes = sorted({entries for _, entries in costs})
    rows = [[f"{entries:,}"] + [f"{costs[idle, entries]:.0f} ns" for idle in range(len(columns))]
            for entries in sizes]
    return (table([title, *columns], rows)
            + f"\n\nAim: at most 500 ns for each: {met(max(costs.values()) <= 500)}.")


def relays_table(costs, rates):
    rows = [[{"Poll": "asked for their relays", "Answers": "answers taken in"}[name], f"{boards:,}", f"{rate:,.0f}"]
            for (name, boards), rate in rates.items()]
    return (pass_table("Relays on time: jobs, cost of each", JOBS, costs)
            + "\n\n" + table(["Relay boards", "boards", "boards a second"], rows))


def connector_table(rates):
    sizes = sorted(size for name, size in rates if name == CONNECTOR[0][0])
    rows = [[title, *(f"{rates[name, size]:,.0f}" for size in sizes)] for name, title in CONNECTOR]
    if ("npm", sizes[0]) in rates:
        pings = CONNECTOR[0][0]
        rows += [["npm delimiter parser, pings answered alike",
                  *(f"{rates['npm', size]:,.0f}" for size in sizes)],
                 ["pings / npm", *(f"{rates[pings, size] / rates['npm', size]:.2f}" for size in sizes)]]
    return table(["Line connector, lines per second", *(f"{size:,} boards" for size in sizes)], rows)


def check_table(rates):
    rows = [[f"CRC-8, blocks of {size:,} bytes", f"{rate / 1e6:,.0f} million bytes"]
            for (name, size), rate in sorted(rates.items()) if name == "Crc8Bytes"]
    if ("modbus", 0) in rates:
        rows.append(["libmodbus, frames of 8 bytes off a pipe, checked", f"{rates['modbus', 0]:,.0f} frames"])
    return table(["Checksums", "a second"], rows)


def scales_table(rates, allocations):
    families = sorted({family for family, _ in rates})
    rows = [[f"{family}", *(text for log in (0, 1)
                            for text in (f"{rates[family, log]:,.0f}", f"{allocations[family, log]:.1f}"))]
            for family in families]
    return table(["Family of scales", "packets/s", "allocations a packet", "packets/s, `OnLog`",
                  "allocations a packet, `OnLog`"], rows)


def coffee_table(rates):
    best = max(rates[name] for name, _ in COFFEE[1:])
    rows = [[title, f"{rates[name]:,.0f}", f"{rates[name] / best:.2f}"] for name, title in COFFEE]
    return (table(["Coffee machine", "a second", "/ faster bare block"], rows)
            + f"\n\nAim: at least 0.40 of the bare blocks: {met(rates[COFFEE[0][0]] >= 0.4 * best)}.")


def script_table(times):
    plain, script = times["DecisionInCpp"], times["DecisionByScript"]
    rows = [["in C++", f"{plain:.2f} us", ""], ["by a script", f"{script:.2f} us", f"{script - plain:.2f} us"]]
    return table(["A card decided", "time", "added"], rows)


def panel_table(times):
    rows = [[title, f"{times[name]:,.2f} ms"] for name, title in PANEL]
    return (table(["Gate panel", "time"], rows)
            + f"\n\nAim: 500 gates built in less than a second: {met(times[PANEL[0][0]] < 1000)}; scrolled within "
              f"a frame of {FRAME_MS} ms: {met(times[PANEL[1][0]] < FRAME_MS)}.")


def idle_scales_table(idle):
    base = idle["unpolled"]["cpu_percent"]
    rows = [[title.format(**idle), f"{idle[state]['cpu_percent']:.2f} %",
             f"{idle[state]['wakeups_per_s']:.1f}", f"{idle[state]['packets_per_s']:.1f}",
             f"{idle[state]['cpu_percent'] / base:.2f}" if base else "–"]
            for state, title in SCALES]
    return table([f"Eight scales, {idle['seconds']} s each", "of one processor", "wake-ups/s", "packets/s",
                  "processor / no polling"], rows)


def ports_table(ports):
    row = [f"{ports['ports']} ports, {ports['seconds']:.0f} s", f"{ports['lines']:,}", f"{ports['lost']}",
           f"{ports['late_bytes']}", f"{ports['cpu_percent']:.1f} %"]
    return (table(["9600 baud on every port", "lines", "lost", "late bytes", "of one processor"], [row])
            + f"\n\nAim: no line lost: {met(ports['lost'] == 0)}.")


def processor():
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as file:
            names = re.findall(r"^model name\s*:\s*(.+)$", file.read(), re.MULTILINE)
        return names[0]
    except (OSError, IndexError):
        return platform.machine()


def update_docs(report):
    text = DOCS.read_text(encoding="utf-8")
    begin, end = "<!-- results -->\n", "<!-- end of results -->"
    head, rest = text.split(begin, 1)
    tail = rest.split(end, 1)[1]
    DOCS.write_text(f"{head}{begin}\n{report}\n\n{end}{tail}", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="build directory")
    parser.add_argument("--quick", dest="effort", action="store_const", const="quick", default="full",
                        help="a rough figure in about a minute")
    parser.add_argument("--smoke", dest="effort", action="store_const", const="smoke",
                        help="only whether everything runs; the figures mean nothing and are not kept")
    parser.add_argument("--update-docs", action="store_true", help="put the table into docs/performance.md")
    options = parser.parse_args()
    runner = Runner(options.build.resolve(), options.effort)

    machine = (f"{os.cpu_count()} processors ({processor()}), Linux {platform.release()}, "
               f"load before the run {os.getloadavg()[0]:.1f}"
               + (f", {options.effort} run" if options.effort != "full" else ""))
    missing = runner.missing()
    connector = runner.connector()
    report = "\n\n".join([
        f"Measured on {machine}." + (f" Not installed: {', '.join(missing)}." if missing else ""),
        latency_table(runner.latency()),
        watched_table(*runner.watched_latency()),
        fanout_table(runner.fanout()),
        rate_table([(title, runner.rates(read, addresses)) for read, addresses, title in READS]),
        pass_table("Entries in the table, cost of each", IDLE, runner.passes()),
        pass_table("Networked gates: entries in the table, cost of each", IDLE_NETWORKED,
                   runner.passes("d24_bench")),
        relays_table(*runner.relays()),
        connector_table(connector),
        check_table(connector),
        scales_table(*runner.scales()),
        coffee_table(runner.coffee()),
        script_table(runner.script()),
        panel_table(runner.panel()),
        idle_scales_table(runner.idle_scales()),
        ports_table(runner.ports()),
    ])
    print(report)
    if options.effort == "smoke":
        return
    (options.build / "results.txt").write_text(report + "\n", encoding="utf-8")
    if options.update_docs:
        update_docs(report)


if __name__ == "__main__":
    main()
