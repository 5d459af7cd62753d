"""Measured figures, their budgets, and the table of both."""

import dataclasses
import statistics


class Samples:
    """Several measurements of one thing."""

    def __init__(self, unit, values):
        self.unit = unit
        self.values = list(values)
        self.median = statistics.median(self.values)

    def text(self):
        text = f"{_number(self.median)} {self.unit}".strip()
        if len(self.values) > 1:
            text += f" ({_number(min(self.values))} to {_number(max(self.values))})"
        return text


@dataclasses.dataclass
class Budget:
    """The most that a figure may be: a multiple of the floor, or an amount."""

    name: str
    factor: float = 0
    amount: float = 0

    def allows(self, figure):
        limit = self.factor * figure.floor.median if self.factor else self.amount
        return figure.program.median <= limit


def times(factor):
    return Budget(f"{factor:g}x", factor=factor)


def at_most(amount, unit=""):
    return Budget(f"{amount:g} {unit}".strip(), amount=amount)


@dataclasses.dataclass
class Figure:
    what: str
    program: Samples
    floor: Samples = None
    budget: Budget = None

    def ratio(self):
        if self.budget and not self.budget.factor:
            return ""
        return f"{self.program.median / self.floor.median:.2f}" if self.floor and self.floor.median else ""

    def verdict(self):
        if not self.budget:
            return ""
        return "within" if self.budget.allows(self) else "OVER"

    def row(self):
        return [
            self.what,
            self.floor.text() if self.floor else "",
            self.program.text(),
            self.ratio(),
            self.budget.name if self.budget else "",
            self.verdict(),
        ]


HEADINGS = ["what", "floor", "program", "ratio", "budget", "verdict"]


def table(figures, markdown=False):
    rows = [HEADINGS] + [figure.row() for figure in figures]
    widths = [max(len(row[column]) for row in rows) for column in range(len(HEADINGS))]
    lines = []
    for row in rows:
        cells = [cell.ljust(width) for cell, width in zip(row, widths, strict=True)]
        lines.append("| " + " | ".join(cells) + " |" if markdown else "  ".join(cells).rstrip())
    if markdown:
        lines.insert(1, "|" + "---|" * len(HEADINGS))
    return "\n".join(lines)


def _number(value):
    if value >= 100:
        return f"{value:.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"
