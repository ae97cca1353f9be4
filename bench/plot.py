"""The plot of docs/performance.md: opening time over frames, and each figure next to what it has to reach."""
import html
import math

INK, MUTED, GRID, OURS, PEER, MISSED = "#1f2933", "#616e7c", "#d9e0e6", "#2166ac", "#b35806", "#b2182b"
WIDTH, PANEL = 860, 300


class Svg:
    def __init__(self, width, height):
        self.parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
                      f'height="{height}" font-family="sans-serif" font-size="12" fill="{INK}">',
                      f'<rect width="{width}" height="{height}" fill="#ffffff"/>']

    def line(self, x1, y1, x2, y2, color, width=1.0, dash=""):
        dashes = f' stroke-dasharray="{dash}"' if dash else ""
        self.parts.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{color}" '
                          f'stroke-width="{width}"{dashes}/>')

    def text(self, x, y, text, anchor="start", color=INK, weight="normal"):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{color}" '
                          f'font-weight="{weight}">{html.escape(text)}</text>')

    def circle(self, x, y, radius, color):
        self.parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{color}"/>')

    def rect(self, x, y, width, height, color):
        self.parts.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" rx="2" '
                          f'fill="{color}"/>')

    def done(self):
        return "\n".join(self.parts + ["</svg>", ""])


def opening_panel(svg, times, peers):
    """Both axes are logarithmic, so that a cost which stays the same for each frame is a line of slope 1."""
    left, right, top, bottom = 90, WIDTH - 200, 40, PANEL - 45
    low = math.floor(math.log10(min(time for _, time in times)))
    high = math.ceil(math.log10(max(time for _, time in times + peers)))

    def x(frames):
        return left + (math.log10(frames) - 4) / 3 * (right - left)

    def y(milliseconds):
        return bottom - (math.log10(milliseconds) - low) / (high - low) * (bottom - top)

    svg.text(left, 22, "Opening and describing a clip, first time, index in the page cache", weight="bold")
    for exponent in range(low, high + 1):
        svg.line(left, y(10**exponent), right, y(10**exponent), GRID)
        svg.text(left - 8, y(10**exponent) + 4, f"{10**exponent:g} ms", "end", MUTED)
    for exponent, name in ((4, "10 thousand"), (5, "100 thousand"), (6, "1 million"), (7, "10 million")):
        svg.text(x(10**exponent), bottom + 20, name, "middle", MUTED)
    svg.text((left + right) / 2, bottom + 37, "video frames (with as many chunks of sound)", "middle", MUTED)

    mean = math.exp(sum(math.log(time / frames) for frames, time in times) / len(times))
    svg.line(x(1e4), y(mean * 1e4), x(1e7), y(mean * 1e7), OURS, 1.5, "5 4")
    for frames, time in times:
        svg.circle(x(frames), y(time), 4.5, OURS)
    svg.text(x(1e7) + 10, y(times[-1][1]) + 4, "this importer", color=OURS)
    svg.text(x(1e7) + 10, y(times[-1][1]) + 19, "(straight line: dashes)", color=MUTED)
    for frames, time in peers:
        svg.circle(x(frames), y(time), 4.5, PEER)
        svg.text(x(frames) - 10, y(time) - 4, "libavformat", "end", PEER)


def reach_panel(svg, rows, top):
    """Bars on a logarithmic axis; 1 is what has to be reached."""
    left, right = 350, WIDTH - 70
    most = max(2.0, max(progress for _, progress, _ in rows))

    def x(progress):
        low = math.log(0.5)
        return left + (math.log(max(progress, 0.5)) - low) / (math.log(most) - low) * (right - left)

    svg.text(90, top, "Figure over what has to be reached (1 and more: reached)", weight="bold")
    for i, (name, progress, reached) in enumerate(rows):
        y = top + 16 + i * 22
        svg.text(left - 8, y + 12, name, "end")
        svg.rect(left, y, max(x(progress) - left, 1), 15, OURS if reached else MISSED)
        svg.text(x(progress) + 6, y + 12, f"{progress:.2f}", color=MUTED)
    svg.line(x(1), top + 10, x(1), top + 18 + len(rows) * 22, INK, 1.2, "3 3")


def write_plot(path, times, peers, rows):
    """`times` and `peers`: (frames, milliseconds); `rows`: (name, figure over reach, reached)."""
    svg = Svg(WIDTH, PANEL + 50 + 22 * len(rows))
    opening_panel(svg, times, peers)
    reach_panel(svg, rows, PANEL + 20)
    path.write_text(svg.done())
