#!/bin/bash
# Brings up to date what the pages show of the tree: the programs of the cookbook and the pictures.
# The tests fail where a page is behind.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages python3
for part in embed floors journeys; do
  try python3 -B "scripts/pages/$part.py"
done
