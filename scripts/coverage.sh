#!/bin/sh
# Runs the tests on a build for coverage. Prints the lines of the library's files that did not run, and a table of the
# shares of lines and branches that did. Fails below 97 % of the lines.
# usage: coverage.sh
#   BUILD: environment variable, a build folder in which `test.sh coverage` has already been run
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh gcovr
if [ -z "${BUILD:-}" ]; then
    find build-coverage -name '*.gcda' -delete 2>/dev/null || true
    scripts/test.sh coverage
fi
table=$(mktemp)
trap 'rm -f "$table"' EXIT
# Branches for exceptions are made by the compiler; they are not in the sources.
gcovr --root . --filter '(api|parsers|render|textio|vobsub)/' --exclude-throw-branches -j 2 \
    --csv "$table" --txt - "${BUILD:-build-coverage}"
awk -F , '
    function line(name, lines, run, branches, taken) {
        printf "| %s | %d of %d, %.1f %% | ", name, run, lines, 100 * run / lines
        printf branches ? "%d of %d, %.1f %% |\n" : "none |\n", taken, branches, branches ? 100 * taken / branches : 0
    }
    NR == 1 { print "| file | lines | branches |"; print "|---|---|---|"; next }
    $2 > 0 { line($1, $2, $3, $5, $6); lines += $2; run += $3; branches += $5; taken += $6 }
    END {
        if (!lines)
            exit 1
        line("all", lines, run, branches, taken)
        exit run < 0.97 * lines
    }' "$table"
