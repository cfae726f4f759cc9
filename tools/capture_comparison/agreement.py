"""Counts agreements and differences field by field."""

import collections
import contextlib

from capture_comparison.namespace import CollectionFailed


class Agreement:
    """Counts of one comparison, by field. A difference is explained by a reason, or it is a finding."""

    def __init__(self, name):
        self.name = name
        self._agreed = collections.Counter()
        self._lacking = collections.Counter()  # neither side has a value
        self._explained = collections.defaultdict(list)  # reason -> [(field, line)]
        self._unexplained = []  # (field, line)
        self._not_compared = []  # lines
        self._machines = set()

    def compare(self, machine, place, field, theirs, ours, explain=None):
        """Compares two values of one field; None is absence. `explain(theirs, ours)` gives a reason for a
        difference, or None."""
        self._machines.add(machine)
        if theirs is None and ours is None:
            self._lacking[field] += 1
            return
        if theirs == ours:
            self._agreed[field] += 1
            return
        line = f"{machine}: {place}: {field}: decode {_show(theirs)}, collected {_show(ours)}"
        reason = explain(theirs, ours) if explain else None
        if reason:
            self._explained[reason].append((field, line))
        else:
            self._unexplained.append((field, line))

    @contextlib.contextmanager
    def attempt(self, machine):
        """Counts a machine whose data this program cannot read, rather than ending the run with it. A program
        that fails to collect from it is a finding."""
        try:
            yield
        except CollectionFailed as failure:
            self._unexplained.append(("collection", f"{machine}: {failure}"))
        except Exception as error:  # data of other people's making can fail anywhere
            self._not_compared.append(f"{machine}: {type(error).__name__}: {error}")

    def is_explained(self):
        """True if something was compared and every difference is explained."""
        return bool(self._agreed) and not self._unexplained

    def totals(self):
        """Fields compared, agreed, explained and different, those that both sides lack, machines not compared."""
        explained = sum(len(entries) for entries in self._explained.values())
        agreed = sum(self._agreed.values())
        return (agreed + explained + len(self._unexplained), agreed, explained, len(self._unexplained),
                sum(self._lacking.values()), len(self._not_compared))

    def print(self, verbose=False):
        explained = collections.Counter(field for entries in self._explained.values() for field, _ in entries)
        unexplained = collections.Counter(field for field, _ in self._unexplained)
        print(f"\n{self.name}: {len(self._machines)} machines")
        print(f"{'field':<36}{'compared':>10}{'agreed':>10}{'explained':>11}{'differ':>8}{'both lack':>11}")
        for field in sorted(set(self._agreed) | set(explained) | set(unexplained) | set(self._lacking)):
            row = [self._agreed[field], explained[field], unexplained[field]]
            print(_row(field, sum(row), *row, self._lacking[field]))
        print(_row("all", *self.totals()[:5]))
        for reason, entries in sorted(self._explained.items()):
            print(f"explained, {len(entries)}: {reason}")
            for _, line in entries if verbose else []:
                print(f"    {line}")
        if self._not_compared:
            print(f"not compared, {len(self._not_compared)}: the data cannot be read")
        for line in self._not_compared:
            print(f"    {line}")
        for _, line in self._unexplained:
            print(f"DIFFERS {line}")


def _row(field, compared, agreed, explained, differ, lacking):
    return f"{field:<36}{compared:>10}{agreed:>10}{explained:>11}{differ:>8}{lacking:>11}"


def _show(value):
    return "nothing" if value is None else repr(value)
