"""The table of agreements: fields that were compared, and what became of each."""

import collections


class Agreement:
    """Counts of one comparison, by field. A difference is explained by a reason, or it is a finding."""

    def __init__(self, name):
        self.name = name
        self._agreed = collections.Counter()
        self._explained = collections.defaultdict(list)  # reason -> [(field, line)]
        self._unexplained = []  # (field, line)
        self._machines = set()

    def compare(self, machine, place, field, theirs, ours, explain=None):
        """Compares two values of one field; None is absence. `explain(theirs, ours)` gives a reason for a
        difference, or None."""
        self._machines.add(machine)
        if theirs == ours:
            self._agreed[field] += 1
            return
        line = f"{machine}: {place}: {field}: decode {_show(theirs)}, collected {_show(ours)}"
        reason = explain(theirs, ours) if explain else None
        if reason:
            self._explained[reason].append((field, line))
        else:
            self._unexplained.append((field, line))

    def is_explained(self):
        """Something was compared, and no difference is left over."""
        return bool(self._agreed) and not self._unexplained

    def print(self, verbose=False):
        explained = collections.Counter(field for entries in self._explained.values() for field, _ in entries)
        unexplained = collections.Counter(field for field, _ in self._unexplained)
        print(f"\n{self.name}: {len(self._machines)} machines")
        print(f"{'field':<36}{'compared':>10}{'agreed':>10}{'explained':>11}{'differ':>8}")
        totals = [0, 0, 0, 0]
        for field in sorted(set(self._agreed) | set(explained) | set(unexplained)):
            row = [self._agreed[field], explained[field], unexplained[field]]
            row.insert(0, sum(row))
            totals = [total + value for total, value in zip(totals, row)]
            print(f"{field:<36}{row[0]:>10}{row[1]:>10}{row[2]:>11}{row[3]:>8}")
        print(f"{'all':<36}{totals[0]:>10}{totals[1]:>10}{totals[2]:>11}{totals[3]:>8}")
        for reason, entries in sorted(self._explained.items()):
            print(f"explained, {len(entries)}: {reason}")
            for _, line in entries if verbose else []:
                print(f"    {line}")
        for _, line in self._unexplained:
            print(f"DIFFERS {line}")


def _show(value):
    return "nothing" if value is None else repr(value)
