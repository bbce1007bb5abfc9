#!/usr/bin/env bash
# scripts/mutation_score.sh [COUNT] [--seed N] [--only PATH]: puts COUNT small defects (100 without any) into the layers, one
# at a time and in a copy of the tree, and sees whether a test fails. They are drawn at random, the same ones for a seed.
# Results add up in build/mutation/results; what is there already is not tried again, except with --survivors, which tries
# again what no test had seen. --summary prints what is there. What changes nothing is listed in
# tests/mutation/survivors.txt. Exits 0 when all were tried.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/setup.sh release
exec /usr/bin/python3 -B tests/mutation/mutation_score.py "$@"
