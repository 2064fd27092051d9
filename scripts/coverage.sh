#!/bin/sh
# Runs the tests on a build that counts what runs. Prints which lines of the library's files did not, and a table of the
# shares of lines and branches that did; fails below 97 % of the lines.
# usage: coverage.sh
#   BUILD: from the environment, a folder in which test.sh coverage has been run already
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh gcovr
if [ -z "${BUILD:-}" ]; then
    find build-coverage -name '*.gcda' -delete 2>/dev/null || true
    scripts/test.sh coverage
fi
table=$(mktemp)
trap 'rm -f "$table"' EXIT
# Branches to where an exception lands are the compiler's, not the sources'.
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
