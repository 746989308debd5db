"""Whether a long run passed."""
import statistics

MAX_GROWTH_KIB = 256  # of the process's own memory, from the first fifth after warming up to the last
MAX_WAKEUPS = 5  # for each poll
MAX_LOG = 4 * 100000


def fifths(rows, column):
    """The values of a column in the first and in the last fifth of the rows."""
    part = max(1, len(rows) // 5)
    return [[row[column] for row in rows[place]]
            for place in (slice(part), slice(len(rows) - part, None))]


def slope(rows, column):
    """How much a column rises in an hour, by the least squares."""
    times, values = [row[0] / 3600 for row in rows], [row[column] for row in rows]
    return statistics.linear_regression(times, values).slope if len(set(times)) > 1 else 0


def of_account(run, facts):
    account, published = run.account, facts["last"] - facts["first"]
    yield ("Every reading came once and in order", not account.gaps and not account.conflicts,
           f"{account.readings} readings, {len(account.gaps)} gaps, {account.repetitions} "
           f"repetitions, {len(account.conflicts)} of them with another content")
    yield ("What the last process counted was published", facts["counted"] == published,
           f"{facts['counted']} counted, {published} published, {facts['broker']['dropped']} "
           f"dropped, {facts['broker']['damaged']} damaged")


def of_process(run, facts):
    rows = [row for row in run.samples.rows if row[1] == run.samples.process]
    rows = rows[len(rows) // 5:]  # it is warm by then
    begin, end = map(statistics.median, fifths(rows, 3))
    yield ("Memory does not grow", end - begin <= MAX_GROWTH_KIB,
           f"own {begin:.0f} KiB at first, {end:.0f} KiB at last, {max(row[3] for row in rows)} KiB "
           f"at most, slope {slope(rows, 3):+.0f} KiB an hour; resident "
           f"{max(row[2] for row in rows)} KiB at most")
    before, after = list(zip(*facts["calm before"])), list(zip(*facts["calm after"]))
    yield ("Descriptors and threads return",
           all(min(new) <= max(old) for old, new in zip(before, after)),
           f"descriptors: {max(before[0])} when all was calm at first, {min(after[0])} at last, "
           f"{max(row[4] for row in rows)} at most; threads: {max(before[1])}, {min(after[1])}, "
           f"{max(row[5] for row in rows)}")
    all_rows = [row for row in run.samples.rows if row[1] == run.samples.process]
    wakeups = run.samples.wakeups / max(1, facts["polls"])
    yield ("Wake-ups are bounded", wakeups <= MAX_WAKEUPS,
           f"{wakeups:.1f} for each of {facts['polls']} polls, "
           f"{max(row[6] for row in all_rows):.0f} a second at most; processor "
           f"{statistics.mean(row[7] for row in all_rows):.1f} ms a second")


def verdict(run, facts):
    """Prints the table of a run. @return whether it passed"""
    results = list(of_account(run, facts)) + list(of_process(run, facts))
    results.append(("The log stays small and is opened anew", facts["log"] <= MAX_LOG,
                    f"{facts['log']} bytes in all its files"))
    results.append(("SIGTERM ends it with status 0", facts["status"] == 0,
                    f"status {facts['status']}"))
    results.append(("Nothing else was amiss", not run.faults, "; ".join(run.faults) or "nothing"))
    events = ", ".join(f"{count} {what}" for what, count in sorted(run.counts.items()))
    print(f"\n{run.samples.now() / 60:.1f} minutes, {sum(run.counts.values())} events: {events}.\n")
    print("| What is asked for | | Measured |\n|---|---|---|")
    for name, passed, text in results:
        print(f"| {name} | {'yes' if passed else '**no**'} | {text} |")
    return all(passed for _, passed, _ in results)
