#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Renders the program's icon from its drawings into the PNGs that the program carries, and into
# the .ico of the Windows program. They are committed; this is for whoever changes a drawing.
# Needs rsvg-convert (Debian: librsvg2-bin) and python3.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../src/app/icon"

sizes=(16 20 24 32 40 48 64 80 128 256)
for size in "${sizes[@]}"; do
  drawing=davo.svg
  [ "$size" -gt 24 ] || drawing=davo-small.svg
  rsvg-convert --width "$size" --height "$size" "$drawing" --output "davo-$size.png"
done

# An .ico is a table of pictures in front of the pictures; PNG is allowed for each.
python3 - "${sizes[@]}" <<'EOF'
import struct, sys
sizes = [int(size) for size in sys.argv[1:]]
pictures = [open(f"davo-{size}.png", "rb").read() for size in sizes]
offset = 6 + 16 * len(sizes)
table = struct.pack("<HHH", 0, 1, len(sizes))
for size, picture in zip(sizes, pictures):
    side = size % 256
    table += struct.pack("<BBBBHHII", side, side, 0, 0, 1, 32, len(picture), offset)
    offset += len(picture)
open("davo.ico", "wb").write(table + b"".join(pictures))
EOF
