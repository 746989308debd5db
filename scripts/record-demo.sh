#!/bin/bash
# Runs the demonstration in a terminal and draws what it shows: docs/demo.svg, for the README.
# usage: scripts/record-demo.sh [--from TEXT] [--rows N] [--columns N] [--seconds N]
#   --from TEXT  begins with the first line that holds TEXT
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages python3
try python3 -B scripts/pages/record.py --from "A broker" --rows 40 --columns 104 --seconds 600 "$@" \
  docs/demo.svg scripts/demo.sh
