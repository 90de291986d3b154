"""The plots of docs/benchmarks.md, drawn from its tables: times of calls as bars on a logarithmic
axis, a file for light pages and one for dark ones.
"""
import math
import re

GROUPS = {
    "arithmetic": ["Add", "Sub", "Mul", "Div", "Mod", "Sqrt", "Ceil", "Floor"],
    "powers": ["Exp", "Ln", "Log", "Power", "IntPower"],
    "angles": ["Sin", "Cos", "Tan", "ArcSin", "ArcCos", "ArcTan", "ArcTan2"],
    "hyperbolic": ["HypSin", "HypCos", "HypTan"],
}
OVERVIEW = {
    "add, subtract, multiply, divide": ["Add", "Sub", "Mul", "Div"],
    "square root": ["Sqrt"],
    "exponential, logarithms, power": ["Exp", "Ln", "Log", "Power"],
    "sine ... arc tangent": GROUPS["angles"],
    "hyperbolic sine, cosine, tangent": GROUPS["hyperbolic"],
}
PEERS = ["Arb", "MPFR", "Boost"]
OURS = "oci-number"
THEMES = {
    "light": {"page": "#ffffff", "text": "#1f2328", "quiet": "#59636e", "line": "#e3e7eb",
              "bars": ["#0a5cc4", "#6e7a87", "#9aa5b1", "#c5ccd4"]},
    "dark": {"page": "#0d1117", "text": "#dfe4ea", "quiet": "#9aa4af", "line": "#262d35",
             "bars": ["#6cb0ff", "#98a3af", "#6d7884", "#48525d"]},
}


def times(text):
    """From the tables: {(function, digits or ""): {name of the measured: ns}}, in their order."""
    found = {}
    for row in re.findall(r"^\| ([^|]+) \| ([\d.]+) \| ([^|]+) \| ([\d.]+) \| [\d.]+ \|", text, re.M):
        title, ours, peer, theirs = row
        entry = found.setdefault(title.replace("`", ""), {OURS: float(ours)})
        entry[peer.replace("`", "")] = float(theirs)
    return found


def shown(ns):
    return f"{int(ns + 0.5)} ns" if ns < 999.5 else f"{ns / 1000:.3g} µs"


def bars(title, rows, legend, theme):
    """The SVG of rows: (label, [ns, ...]), one bar each."""
    colours = THEMES[theme]
    left = 26 + int(7.4 * max(len(label) for label, _ in rows))
    right, thick, gap, top, width = 70, 13, 12, 78, 780
    values = [ns for _, row in rows for ns in row]
    low, high = 1, max(values)
    scale = (width - left - right) / math.log10(high / low)
    height = top + sum(len(row) * thick + gap for _, row in rows) + 34
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
           f'viewBox="0 0 {width} {height}" font-family="system-ui, sans-serif" font-size="13" '
           f'role="img" aria-label="{title}">',
           f'<rect width="100%" height="100%" fill="{colours["page"]}"/>']

    def write(x, y, text, colour="text", anchor="start", size=13):
        out.append(f'<text x="{x:.1f}" y="{y:.1f}" fill="{colours[colour]}" text-anchor="{anchor}" '
                   f'font-size="{size}">{text}</text>')

    write(16, 26, title, size=15)
    x = 16
    for name, colour in zip(legend, colours["bars"]):
        out.append(f'<rect x="{x}" y="43" width="12" height="12" fill="{colour}"/>')
        write(x + 18, 54, name)
        x += 40 + 7.5 * len(name)
    bottom = height - 30
    tick = low
    while tick <= high:
        x = left + scale * math.log10(tick / low)
        out.append(f'<path d="M{x:.1f} {top - 6}V{bottom}" stroke="{colours["line"]}"/>')
        write(x, bottom + 18, shown(tick), "quiet", "middle", 12)
        tick *= 10
    y = top
    for label, row in rows:
        write(left - 10, y + len(row) * thick / 2 + 4.5, label, anchor="end")
        for ns, colour in zip(row, colours["bars"]):
            end = scale * math.log10(ns / low)
            out.append(f'<rect x="{left}" y="{y}" width="{end:.1f}" height="{thick - 2}" '
                       f'fill="{colour}"/>')
            write(left + end + 6, y + thick - 3, shown(ns), "quiet", size=11)
            y += thick
        y += gap
    return "\n".join([*out, "</svg>"]) + "\n"


def write_plots(text, folder):
    """Draws the page's tables."""
    measured = times(text)
    calculations = {name: [measured[f"OCINumber{name}, 40 digits"][who] for who in [OURS, *PEERS]]
                    for group in GROUPS.values() for name in group}

    def mean(names):
        columns = zip(*(calculations[name] for name in names))
        return [math.exp(sum(map(math.log, column)) / len(column)) for column in columns]

    plots = {"overview": ("Time of a call with 40 digits (geometric means, logarithmic scale)",
                          [(label, mean(names)) for label, names in OVERVIEW.items()],
                          [f"{OURS}, correctly rounded in decimal", *PEERS])}
    for group, names in GROUPS.items():
        plots[group] = (f"{group.capitalize()}, 40 digits: time of a call, logarithmic scale",
                        [(f"OCINumber{name}", calculations[name]) for name in names],
                        [OURS, *PEERS])
    # Each with a peer of its own.
    conversions = []
    for title, row in measured.items():
        for peer in row:
            if re.match("cpp_dec_float|strtod|snprintf|to_chars", peer):
                label = title.replace("OCINumber", "")
                name = peer.replace("cpp_dec_float<40>", "Boost")
                conversions.append((f"{label} / {name}", [row[OURS], row[peer]]))
    plots["conversions"] = ("Text, reals and integers: time of a call, logarithmic scale", conversions,
                            [OURS, "the function behind the stroke"])
    folder.mkdir(exist_ok=True)
    for name, (title, rows, legend) in plots.items():
        for theme in THEMES:
            (folder / f"{name}-{theme}.svg").write_text(bars(title, rows, legend, theme),
                                                        encoding="utf-8")
