# SPDX-License-Identifier: BSD-3-Clause
"""What qvr_bench wrote with --json: one file, or several runs that each measured a part."""

import json
import re


class Results:
    def __init__(self, files):
        runs = [json.load(open(file)) for file in files]
        self.machine = runs[0]["machine"]
        self.library = runs[0]["library"]
        self.rounds = runs[0]["rounds"]
        self.values = {(row["name"], row["measure"]): row for run in runs for row in run["results"]}
        # Each goal is decided by the run that measured it.
        self.goals = {}
        for run in runs:
            for row in run["goals"]:
                key = (row["goal"], row["beside"], row["size"])
                if row["measured"] or key not in self.goals:
                    self.goals[key] = row

    def median(self, name, measure):
        """The median, or None where it was not measured."""
        row = self.values.get((name, measure))
        return row and row["median"]

    def named(self, start):
        """Rows whose name begins so, in the order in which they were measured."""
        return [row for row in self.values.values() if row["name"].startswith(start)]

    def parts(self, start, index):
        """The different words at one place of the names that begin so, in order."""
        return list(dict.fromkeys(row["name"].split("/")[index] for row in self.named(start)))


def words(name):
    """A part of a name as people read it: '7-RGBA/1-U8' is 'RGBA U8', 'coded-alpha/hair-8-bit' 'coded alpha hair 8 bit'."""
    return re.sub(r"(^|/)\d+-", r"\1", name).replace("/", " ").replace("-", " ")
