"""Draws the numbered nodes of an observation over its window image, as an SVG file.

    annotate.py OBSERVATION.json PICTURE.svg

Boxes are green where a node is clickable, grey where it is not; a number is the last part of the
node's id.
"""

import html
import json
import sys


def annotated(result):
    image = result["image"]
    bounds = image["bounds"]
    scale_x = image["width"] / bounds["width"]
    scale_y = image["height"] / bounds["height"]
    parts = [
        '<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d">'
        % (image["width"], image["height"], image["width"], image["height"]),
        '<image width="%d" height="%d" href="data:image/png;base64,%s"/>'
        % (image["width"], image["height"], image["base64"]),
        '<g font-family="sans-serif" font-size="10" font-weight="bold">',
    ]
    for node in result["snapshot"]["nodes"]:
        box = node.get("bounds")
        if not box:
            continue
        x = (box["x"] - bounds["x"]) * scale_x
        y = (box["y"] - bounds["y"]) * scale_y
        colour = "#0a0" if node["clickable"] else "#888"
        number = node["id"].rsplit(":", 1)[1]
        tag = 4 + 6 * len(number)  # At the right, since most texts begin at the left.
        right = x + box["width"] * scale_x
        title = html.escape("%s %s" % (node["role"], node["name"]))
        parts.append(
            '<g><title>%s</title><rect x="%.1f" y="%.1f" width="%.1f" height="%.1f" fill="none" '
            'stroke="%s"/>' % (title, x, y, box["width"] * scale_x, box["height"] * scale_y, colour))
        if node["clickable"]:
            parts.append(
                '<rect x="%.1f" y="%.1f" width="%d" height="11" fill="%s"/>'
                '<text x="%.1f" y="%.1f" fill="#fff">%s</text>'
                % (right - tag, y, tag, colour, right - tag + 2, y + 9, number))
        parts.append("</g>")
    parts.append("</g></svg>")
    return "\n".join(parts) + "\n"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        result = json.load(file)
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(annotated(result))


if __name__ == "__main__":
    main()
