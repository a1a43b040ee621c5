#!/usr/bin/env python3
"""Replays the recorded courses through the daemon's own code, prints the tables of docs/estimate.md and draws its
picture (needs gnuplot).

usage: estimate.py STATSPROBE (built as tests/stats/statsProbe)

Each run is predicted, second by second, from those before it under the same name. Errors are those of the end that
is shown, in percent of the run's length, over the seconds from the first percent on.
"""

import collections
import math
import os
import statistics
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
METHODS = ("linear", "smoothed", "exact", "adaptive", "with amounts")
Run = collections.namedtuple("Run", "job cache amount seconds changes")  # changes: (tenths of a second, percent)


def courses():
    """The runs of each job in their order."""
    jobs = {}
    for name in sorted(os.listdir(os.path.join(HERE, "courses"))):
        job, extension = os.path.splitext(name)
        if extension != ".txt":
            continue
        with open(os.path.join(HERE, "courses", name)) as file:
            for cache, amount, tenths, *times in map(str.split, file):
                changes = [(int(at), percent + 1) for percent, at in enumerate(times) if at != "-"]
                jobs.setdefault(job, []).append(Run(job, cache, int(amount), int(tenths) // 10, [(0, 0)] + changes))
    return jobs


def given_up(run):
    """The run as if somebody had stopped it at 30 %."""
    changes = [change for change in run.changes if change[1] <= 30]
    return run._replace(cache="given up", seconds=max(changes[-1][0] // 10, 1), changes=changes)


def percents(run):
    """The percent at the end of each second."""
    return [max(percent for at, percent in run.changes if at < 10 * second) for second in range(1, run.seconds + 1)]


def linear(run):
    return [second * 100 / percent if percent else None for second, percent in enumerate(percents(run)[:-1], 1)]


def smoothed(run):
    """By the rate of the latest changes: exponential averages of their sizes and times, the newest weighing 0.3."""
    ends, sizes, times, last, changes = [], 0, 0, (0, 0), iter(run.changes[1:] + [(math.inf, 0)])
    change = next(changes)
    for second in range(1, run.seconds):
        while change[0] < 10 * second:
            if change[0] > last[0]:
                sizes += 0.3 * (change[1] - last[1] - sizes)
                times += 0.3 * ((change[0] - last[0]) / 10 - times)
                last = change
            change = next(changes)
        ends.append(second + (100 - last[1]) * times / sizes if sizes else None)
    return ends


def shown(probe, runs, mode, *told):
    """The ends that the daemon shows for runs under one name, as it learns them one after the other. `told` gives what it
    is told of each run's amount."""
    steps = [mode]
    for run in runs:
        steps += ["start", *(f"amount {amount(run)}" for amount in told)]
        changes = iter(run.changes + [(math.inf, 0)])
        change = next(changes)
        for second, percent in enumerate(percents(run), 1):
            while change[0] < 10 * second:
                steps.append(f"add {change[1]}")
                change = next(changes)
            steps.append(f"tick {second} {percent}")
        steps += [f"add {percent}" for at, percent in run.changes if at >= 10 * run.seconds]
        steps.append(f"run {run.seconds}")
    probe.stdin.write(";".join(steps) + "\n")
    probe.stdin.flush()
    answers = (answer.split() for answer in probe.stdout.readline().split(";") if answer.strip())
    ends = []
    for run in runs:
        ticks = [next(answers) for _ in range(run.seconds)][:-1]
        ends.append([int(total) if step == "display" and int(total) >= second else None
                     for second, (step, total, _) in enumerate(ticks, 1)])
    return ends


class Judged:
    """One run and the end that each method showed at each second from the first percent on."""

    def __init__(self, run, ends):
        self.run = run
        first = next((i for i, end in enumerate(ends["linear"]) if end is not None), run.seconds - 1)
        self.seconds = range(first + 1, run.seconds)
        self.ends = {method: ends[method][first:] for method in METHODS}

    def errors(self, method, part=None, parts=3):
        """Those of the given part of the run's time."""
        seconds = self.run.seconds
        return [abs(end - seconds) * 100 / seconds for at, end in zip(self.seconds, self.ends[method])
                if end is not None and part in (None, at * parts // seconds)]

    def there(self, method):
        return 100 * sum(end is not None for end in self.ends[method]) / len(self.seconds)

    def moves(self, method):
        ends = self.ends[method]
        return [abs(b - a) * 100 / self.run.seconds for a, b in zip(ends, ends[1:]) if None not in (a, b)]


def judge(probe, runs):
    by_method = {"linear": map(linear, runs), "smoothed": map(smoothed, runs),
                 "exact": shown(probe, runs, "exact"), "adaptive": shown(probe, runs, "adaptive"),
                 "with amounts": shown(probe, runs, "adaptive", lambda run: run.amount)}
    ends = [dict(zip(METHODS, of_run)) for of_run in zip(*(by_method[method] for method in METHODS))]
    return [Judged(run, of_run) for run, of_run in zip(runs, ends)]


def mean(values):
    values = list(values)
    return statistics.fmean(values) if values else math.nan


def over_jobs(judged, method, part):
    """The mean error of each job."""
    jobs = collections.defaultdict(list)
    for one in judged:
        jobs[one.run.job] += [mean(one.errors(method, part))] if one.errors(method, part) else []
    return {job: mean(errors) for job, errors in jobs.items() if errors}


def better(judged, method, part):
    """How many times smaller than linear's the errors are, in the geometric mean over jobs."""
    own, of_linear = over_jobs(judged, method, part), over_jobs(judged, "linear", part)
    return math.exp(mean(math.log(of_linear[job] / max(own[job], 0.1)) for job in own))


def thirds(write):
    return " / ".join(write(part) for part in range(3))


def print_table(title, judged):
    print(f"\n{title} ({len(judged)} runs)\n\n| | median over jobs | mean over runs | times better than linear "
          "| worst run against linear | there | the end moves by |\n|---|---|---|---|---|---|---|")
    for method in METHODS:
        present = [one for one in judged if one.errors(method) and one.errors("linear")]
        worst = max((mean(one.errors(method)) / mean(one.errors("linear")) for one in present), default=math.nan)
        median = thirds(lambda part: f"{statistics.median(over_jobs(judged, method, part).values() or [math.nan]):.0f}")
        means = thirds(lambda part: f"{mean(mean(one.errors(method, part)) for one in present if one.errors(method, part)):.0f}")
        times = thirds(lambda part: f"{better(judged, method, part):.1f}")
        row = (f"| {method} | {median} % | {means} % | {times} | {worst:.1f} | "
               f"{mean(one.there(method) for one in judged):.0f} % | "
               f"{mean(mean(one.moves(method)) for one in present if one.moves(method)):.1f} %/s |")
        print(row.replace("nan", "-"))


def print_jobs(jobs, judged):
    print("\n| job | its runs took | linear | adaptive | with amounts |\n|---|---|---|---|---|")
    for job, runs in jobs.items():
        errors = [thirds(lambda part: f"{over_jobs(judged, method, part)[job]:.0f}") for method in ("linear", "adaptive", "with amounts")]
        print(f"| {job} | {', '.join(str(run.seconds) for run in runs[:4])}, cold {runs[4].seconds} s | "
              f"{' % | '.join(errors)} % |")


def draw(judged):
    table = os.path.join(os.environ.get("TMPDIR", "/tmp"), f"estimate-{os.getpid()}")
    with open(table, "w") as file:
        for part in range(20):
            errors = [mean(mean(one.errors(method, part, 20)) for one in judged if one.errors(method, part, 20))
                      for method in METHODS]
            print(5 * part + 2.5, *errors, file=file)
    subprocess.run(["gnuplot", "-e", f"table='{table}'; picture='{HERE}/../docs/estimate.svg'",
                    f"{HERE}/estimate.gnuplot"], check=True)
    os.remove(table)


def main():
    probe = subprocess.Popen([sys.argv[1]], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    jobs = courses()
    judged = [one for runs in jobs.values() for one in judge(probe, runs)]
    learned = [one for one in judged if one.run.cache == "warm" and one.run is not jobs[one.run.job][0]]
    print_table("Runs with others before them", learned)
    print_jobs(jobs, learned)
    print_table("Those of a minute and more", [one for one in learned if one.run.seconds >= 60])
    print_table("First runs", [one for one in judged if one.run is jobs[one.run.job][0]])
    print_table("Cold caches", [one for one in judged if one.run.cache == "cold"])
    print_table("After a run that was given up", [one for runs in jobs.values()
                                                  for one in judge(probe, [given_up(runs[0]), runs[1]])[1:]])
    names = sorted(jobs)
    mixed = [run for one, other in zip(names[::2], names[1::2]) for run in
             judge(probe, [run for pair in zip(jobs[one][:4], jobs[other][:4]) for run in pair])[2:]]
    print_table("Two unlike jobs under one name", mixed)
    draw(learned)


main()
