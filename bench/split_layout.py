#!/usr/bin/env python3
"""Lays the core-row rectangles drawn by make_sample_trays over a session.

`slabber new SESSION PHOTOS... --rows N --depths-from-names` gives every photo
N equal bands across its whole width, header board and tray walls included.
make_sample_trays knows where it drew each row of core and writes that layout
as JSON (trays.json). This script replaces the outline ("verts" record) of
each rectangle of each image by the rectangle of the matching row, so that the
session cuts the core and nothing else, as a user's hand-drawn rectangles
would.

    split_layout.py SESSION.slbs trays.json

The session is rewritten in place (through a temporary file). Images are
matched by file name; an image whose photo is not in the layout, or whose
rectangle count differs from the layout's row count, stops the script.
"""
import json
import os
import sys
import tempfile


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    session_path, layout_path = sys.argv[1], sys.argv[2]
    with open(layout_path) as f:
        layout = {entry["file"]: entry for entry in json.load(f)}
    with open(session_path) as f:
        lines = f.read().splitlines()

    out = []
    rows = None  # rows of the image being read
    row = 0
    for line in lines:
        key = line.split(",", 1)[0]
        if key == "image file":
            name = os.path.basename(line.split(",", 1)[1].strip().strip('"').replace("\\", "/"))
            if name not in layout:
                sys.exit(f"split_layout: {name} is not in {layout_path}")
            rows = layout[name]["rows"]
            row = 0
        elif key == "polies" and rows is not None:
            count = int(line.split(",")[1])
            if count != len(rows):
                sys.exit(f"split_layout: {count} rectangles in the session, {len(rows)} rows in the layout")
        elif key == "verts" and rows is not None:
            r = rows[row]
            row += 1
            left, top = r["left"], r["top_px"]
            right, bottom = left + r["width"], top + r["height"]
            corners = [(left, top), (right, top), (right, bottom), (left, bottom)]
            # Pixel x, pixel y, world x, world y for each corner (world = pixel
            # at a view scale of 1).
            fields = ["verts", "4"] + [str(v) for x, y in corners for v in (x, y, x, y)]
            line = ",".join(fields)
        out.append(line)

    folder = os.path.dirname(os.path.abspath(session_path))
    fd, temp = tempfile.mkstemp(dir=folder, prefix=".split_layout.")
    with os.fdopen(fd, "w") as f:
        f.write("\n".join(out) + "\n")
    os.replace(temp, session_path)


if __name__ == "__main__":
    main()
