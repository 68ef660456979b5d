#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# Checks format, licence lines and includes, and with --tidy runs clang-tidy over the asan build (whose unity
# files make that quick).
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

if [ "${1:-}" = --tidy ]; then
  # Qt's own generated sources are not ours to tidy.
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/asan/compile_commands.json | grep -vE 'autogen|_deps' |
    xargs -P "$(nproc)" -n 2 clang-tidy-19 -p build/asan --quiet 2>/dev/null | tee build/tidy.log | grep -E 'error:|warning:' >&2
  grep -qE 'error:' build/tidy.log && complain "clang-tidy found the above"
fi
exit $failed
