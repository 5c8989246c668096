#!/bin/bash
# Plants one fault after the other in a copy of the sources, and looks whether the tests notice.
#
#   tools/mutants.sh [NAME | FILE]...   all of tools/mutants.jsonl, or those of a name or below a folder
#   tools/mutants.sh --refill [...]     the same with every test, and notes in the list which ones noticed
#   tools/mutants.sh --list [...]       prints them
#   --jobs N                            copies that work side by side; as many as there are processors
set -eu
cd "$(dirname "$0")/.."
tools/install_packages.sh check
exec python3 tools/mutants.py "$@"
