#!/usr/bin/env bash
# count-tests.sh JUNIT_FILE: prints "N passed, N failed[, N skipped]" from CTest's result file. A GoogleTest program counts
# with its cases, of which those that a crash or a timeout kept from ending are failed; any other test counts as one.
# Exit code 1 when something failed or nothing ran.
set -euo pipefail
file=$1
[ -e "$file" ] || file=/dev/null

exec awk '
    function number_after(text, mark) { sub(".*" mark, "", text); return text + 0 }

    /^\t<testcase / {
        status = $0; sub(/.* status="/, "", status); sub(/".*/, "", status)
        programs = declared = ok = skip = asked = 0
    }
    /^\t\t<skipped message="SKIP_/ { asked = 1 }
    /\[==========\] Running [0-9]+ tests? from/ { programs++; declared += number_after($0, "Running ") }
    /\[       OK \] .*\([0-9]+ ms\)/ { ok++ }
    /\[  SKIPPED \] .*\([0-9]+ ms\)/ { skip++ }
    /^\t<\/testcase>/ {
        if (asked || status == "disabled")
            skipped++
        else if (status == "run" && programs) {
            passed += declared - skip
            skipped += skip
        } else if (status == "run")
            passed++
        else {
            open = declared - ok - skip
            failed += open > 0 ? open : 1
            passed += ok
            skipped += skip
        }
    }
    END {
        printf "%d passed, %d failed", passed, failed
        if (skipped) printf ", %d skipped", skipped
        printf "\n"
        exit failed > 0 || passed + failed == 0
    }' "$file"
