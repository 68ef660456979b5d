#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# Compiles each header by itself, so that a missing include cannot hide behind a unity build or the precompiled
# header. What a header includes anyway of the libraries that take long to read is read once for all headers that
# include the same: a precompiled header for each such set, which therefore hides nothing. Only what changed since
# the last time is compiled; takes the flags from the asan build.
set -u
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
out=build/headers
mkdir -p $out

flags=$(grep -oE ' (-I ?|-isystem )[^ ]+' build/asan/compile_commands.json | grep -v "$PWD/" | sort -u | tr -d '\n')
git ls-files --cached --others --exclude-standard -- '*.h' | while IFS= read -r header; do
  [ -f "$header" ] && echo "$header"
done | xargs awk -v flags="$flags" '
  BEGIN {
    count = split("QCoroTask nlohmann/json.hpp QImage filesystem", heavy, " ")
  }
  FNR == 1 { headers[++total] = FILENAME }
  /^#include </ { name = $2; gsub(/[<>]/, "", name); system_[FILENAME] = system_[FILENAME] " " name " " }
  /^#include "/ { name = $2; gsub(/"/, "", name); own[FILENAME] = own[FILENAME] " " name }
  # All that a header includes of the system, also by way of others of ours.
  function gather(file,    names, n, i, folder) {
    if (file in seen) return
    seen[file] = 1
    gathered = gathered system_[file]
    n = split(own[file], names, " ")
    folder = file
    sub(/[^\/]*$/, "", folder)
    for (i = 1; i <= n; ++i) {
      gather("src/" names[i])
      gather("tests/" names[i])
      gather(folder names[i])
    }
  }
  END {
    print "flags = -std=c++23 -pthread -DQT_NO_KEYWORDS -Wall -Wextra -Wno-missing-field-initializers -Werror -Isrc -Itests -Ibench/record" flags
    print "builddir = build/headers"
    print "rule libraries"
    print "  command = clang++-19 $flags -x c++-header -o $out $in"
    print "rule header"
    print "  command = clang++-19 $flags $libraries -fsyntax-only -MD -MF $out.d -MT $out -x c++-header $in && touch $out"
    print "  depfile = $out.d"
    print "  deps = gcc"
    print "  description = $in"
    for (h = 1; h <= total; ++h) {
      gathered = ""
      split("", seen)
      gather(headers[h])
      key = ""
      lines = ""
      for (i = 1; i <= count; ++i)
        if (index(gathered, " " heavy[i] " ")) {
          key = key i
          lines = lines "#include <" heavy[i] ">\n"
        }
      stamp = headers[h]
      gsub(/\//, "_", stamp)
      print "build $builddir/" stamp ".stamp: header " headers[h] (key == "" ? "" : " | $builddir/" key ".pch")
      if (key == "") continue
      print "  libraries = -include-pch $builddir/" key ".pch"
      if (key in keys) continue
      keys[key] = 1
      print "build $builddir/" key ".pch: libraries $builddir/" key ".h"
      file = "build/headers/" key ".h"
      # Left alone when it is there: its time counts.
      if ((getline line < file) < 0) printf "%s", lines > file
      close(file)
    }
  }' >$out/build.ninja.new
cmp -s $out/build.ninja.new $out/build.ninja || mv $out/build.ninja.new $out/build.ninja
ninja -f $out/build.ninja --quiet -k 0 "$@" >&2
