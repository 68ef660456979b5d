#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# Checks format, licence lines, includes and translations; with --tidy also that each header compiles by itself, and runs
# clang-tidy over what is new of the program in the asan build (whose unity files make that quick); with --tidy-all over
# what is new of the tests too, which takes as long again.
set -u
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
failed=0
complain() { echo "lint: $*" >&2; failed=1; }

mapfile -t cpp < <(git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' '*.c')
clang-format-19 --dry-run -Werror "${cpp[@]}" || complain "run clang-format-19 -i on the files above"
while IFS= read -r file; do
  complain "$file has no SPDX licence line"
done < <(git ls-files -- '*.cpp' '*.h' '*.c' '*.js' '*.mjs' '*.sh' '*.cmake' run test | xargs grep -L 'SPDX-License-Identifier')
if grep -n '#include "\.\./' "${cpp[@]}"; then
  complain "include by the folder's name, not by a relative path"
fi
scripts/catalogues --check || complain "a text has no translation"

if [ "${1:-}" = --tidy ] || [ "${1:-}" = --tidy-all ]; then
  left_out='^tests/'
  [ "$1" = --tidy-all ] && left_out='^$'
  scripts/headers.sh || complain "a header above does not compile by itself"
  # What the asan build compiled anew is tidied anew: an object file is as old as the newest that it was made of.
  # Generated sources are not ours to tidy.
  mkdir -p build/tidy
  tidy() {
    local stamp=build/tidy/${1//\//_}
    [ "$stamp" -nt "build/asan/$1" ] && [ "$stamp" -nt .clang-tidy ] && return
    clang-tidy-19 -p build/asan --quiet "$2" >"$stamp.log" 2>"$stamp.errors" && touch "$stamp" && return
    grep -hE 'error:|warning:' "$stamp.log" "$stamp.errors" >&2
    return 1
  }
  export -f tidy
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p; s/^ *"command": .* -o \([^ ]*\) .*$/\1/p' build/asan/compile_commands.json |
    paste -d ' ' - - | grep -vE 'autogen|_deps|Catalogues|wayland_protocols|precompiled' | sort | grep -vE "$left_out" |
    xargs -P "$(nproc)" -n 2 bash -c 'tidy "$@"' tidy ||
    complain "clang-tidy found the above"
fi
exit $failed
