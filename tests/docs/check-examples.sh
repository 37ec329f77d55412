#!/usr/bin/env bash
# check-examples.sh FOLDER ZELKCTL DOCUMENT ... -- COMPILER [ARGUMENT ...]
# Compiles every C and C++ block of the documents as a program, and asks zelkctl's own help whether every zelkctl command that
# they show exists, with its options. Nothing is run but the help. The last three compiler arguments link the libraries.
set -euo pipefail

folder=$1 zelkctl=$2
shift 2
documents=()
while [ "$1" != -- ]; do
    documents+=("$1")
    shift
done
shift
runner=$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/wine-run.sh
failures=0
rm -rf -- "$folder"
mkdir -p -- "$folder"

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# A block is fenced and named c or cpp, or indented and begins with an #include. Its file keeps the document's line
# numbers in what the compiler says.
extract_blocks() {
    awk -v folder="$folder" '
        function open_block() {
            name = FILENAME
            gsub(/.*\/|\.md$/, "", name)
            file = folder "/" name "-" FNR ".cpp"
            print "#line " (fenced ? FNR + 1 : FNR) " \"" FILENAME "\"" >file
        }
        FNR == 1 { fenced = indented = 0 }
        /^```c(pp)?$/ { fenced = 1; open_block(); next }
        /^```/ { fenced = 0; next }
        fenced { print >file; next }
        !indented && /^    #include/ { indented = 1; open_block() }
        indented && /^[^ ]/ { indented = 0 }
        indented { print substr($0, 5) >file }
    ' "$@"
}

# "document:line:noun [verb] options" of every line that shows a command, behind a prompt or indented.
extract_commands() {
    awk '
        sub(/^(> |\$ |    )(zelkctl|\.\/run)( |$)/, "") {
            sub(/ *#.*/, "")
            print FILENAME ":" FNR ":" $0
        }
    ' "$@"
}

# The noun and, for commands with one, the verb: zelkctl answers an unknown one with the help of the level above.
help_of() {
    local words=$*
    local file=$folder/help-${words// /-}.txt
    [ -e "$file" ] || "$runner" "$zelkctl" "$@" --help </dev/null >"$file" || return 1
    grep -q "^Usage: zelkctl${words:+ $words} " "$file" && cat "$file"
}

# The help of a verb without a noun, whose first argument looks like the verb of one.
help_of_verb() {
    help_of "${1-}" && ! grep -q "^Usage: .* SUBCOMMAND" "$folder/help-${1-}.txt"
}

check_command() {
    local place=$1 help word words=()
    shift
    for word in "$@"; do
        [[ ${#words[@]} -lt 2 && $word =~ ^[a-z][a-z0-9-]*$ ]] || break
        words+=("$word")
    done
    help=$(help_of ${words[@]+"${words[@]}"}) || help=$(help_of_verb "${words[@]:0:1}") || {
        fail "$place: there is no command \"${words[*]}\""
        return
    }
    for word in "$@"; do
        [[ $word != --?* ]] || grep -qE -- "(^|[ ,])$word([ ,]|\$)" <<<"$help" ||
            fail "$place: \"${words[*]}\" has no option $word"
    done
}

extract_blocks "${documents[@]}"
blocks=0
for source in "$folder"/*.cpp; do
    blocks=$((blocks + 1))
    "${@:1:$#-3}" -o "${source%.cpp}.exe" "$source" "${@:$#-2}" || fail "$source does not compile"
done

commands=0
while IFS=: read -r document line arguments; do
    commands=$((commands + 1))
    read -ra words <<<"$arguments"
    check_command "$document:$line" ${words[@]+"${words[@]}"}
done < <(extract_commands "${documents[@]}")

echo "$blocks programs, $commands commands, $failures failures"
[ "$failures" -eq 0 ] && [ "$blocks" -gt 0 ] && [ "$commands" -gt 0 ]
