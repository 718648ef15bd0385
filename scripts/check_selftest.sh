#!/usr/bin/env bash
# usage: scripts/check_selftest.sh
# A checker that accepts everything looks like a clean tree. Each one here is given a good tree, which it must pass, and
# that tree with one fault, which it must refuse naming the file and the line.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
complaints=$(mktemp)
trap 'rm -rf "$scratch" "$complaints"' EXIT
cd "$scratch"
mkdir -p quorvel/Platform/{Foundation,UIKit,Security,Dispatch} quorvel/{Utility,Extensions/Foundation} apps/quorvel docs

good_tree() {
  printf '%s\n' '#pragma once' '#include <vector>' '// icu::Locale and "unicode" in words are no types.' \
    '/// `trim:`, `isBlank:`: one text for two' '/// operations.' 'int trim(int text);' >quorvel/Utility/Text.h
  printf '%s\n' '#include <unicode/uregex.h>' '#include <quorvel/Platform/UIKit/UIColor.h>' >quorvel/Platform/Security/Key.cpp
  printf '%s\n' '#include <unicode/uregex.h>' '#include <unistd.h>' >quorvel/Platform/Foundation/Match.cpp
  printf '%s\n' '#pragma once' '#include <cstdint>' '' '#include <emmintrin.h>' >quorvel/Platform/UIKit/UIColor.h
  printf '%s\n' '#include <quorvel/Platform/UIKit/UIColor.h>' >quorvel/Extensions/Foundation/Color.cpp
  printf '%s\n' '#include "commands.h"' '#include <sys/stat.h>' '#include <apps/quorvel/commands.h>' >apps/quorvel/main.cpp
  printf 'StringUtils\ttrim:\nStringUtils\tisBlank:\nUITools\ttable trim: of a cell\n' >docs/operation-names.tsv
}

complain() { echo "scripts/check_selftest.sh:1: $*" | tee -a "$complaints"; }
# usage: refuses CHECKER FILE LINE WHY, with the file's faulty text on standard input
refuses() {
  local checker=$1 file=$2 line=$3 why=$4 output
  good_tree
  cat >"$file"
  if output=$(run "$checker" 2>&1); then
    complain "$checker passes $why"
  elif ! grep -qF -- "$file:$line:" <<<"$output"; then
    complain "$checker refuses $why without naming $file:$line: $output"
  fi
  case $file in
    quorvel/* | apps/* | docs/*) rm -f "$file" ;;
  esac
}
passes() {
  local output
  good_tree
  output=$(run "$1" 2>&1) || complain "$1 refuses the good tree: $output"
}
run() {
  case $1 in
    format) find . -name '*.h' -o -name '*.cpp' | xargs clang-format-19 --style="file:$here/../.clang-format" --dry-run -Werror ;;
    style) find . -type f -printf '%P\0' | xargs -0 "$here/check_style.py" ;;
    tidy) clang-tidy-19 --quiet --config-file="$here/../.clang-tidy" --warnings-as-errors='*' quorvel/Utility/Tidy.cpp -- -std=c++20 ;;
    *) "$here/check_$1.py" . ;;
  esac
}

passes layers
refuses layers quorvel/Platform/Foundation/Up.h 1 'Platform including Utility' <<<'#include <quorvel/Utility/Text.h>'
refuses layers quorvel/Platform/Foundation/Up.cpp 2 'Platform including Extensions' <<<$'\n#include <quorvel/Extensions/Foundation/X.h>'
refuses layers quorvel/Platform/Foundation/Face.h 1 'a third-party header in a platform header' <<<'#include <unicode/ustring.h>'
refuses layers quorvel/Utility/Text.cpp 1 'a third-party header above the platform' <<<'#  include <rapidjson/reader.h>'
refuses layers quorvel/Utility/Posix.cpp 1 'a system header above the platform' <<<'#include <unistd.h>'
refuses layers quorvel/Utility/Wide.cpp 1 'vector code above the platform' <<<'#include <immintrin.h>'
refuses layers quorvel/Utility/Near.cpp 1 'an include without its path' <<<'#include "Text.h"'
refuses layers apps/quorvel/json.cpp 1 'a third-party header in the command' <<<'#include <nlohmann/json.hpp>'
refuses layers quorvel/Platform/Dispatch/Queue.cpp 1 'graphics on the ground floor' <<<'#include <quorvel/Platform/QuartzCore/CALayer.h>'
refuses layers quorvel/Platform/Foundation/Tint.cpp 1 'a colour below Foundation' <<<'#include <quorvel/Platform/UIKit/UIColor.h>'
refuses layers quorvel/Platform/UIKit/UIColor.cpp 1 'a colour on graphics' <<<'#include <quorvel/Platform/CoreGraphics/CGColor.h>'
refuses layers quorvel/Platform/Foundation/Show.h 3 'a third-party type in a header' <<<$'/* two\nlines */\nclass Show { URegularExpression* compiled_; };'
refuses layers quorvel/Utility/Show.h 1 'a third-party namespace in a header' <<<'namespace simdjson { class Parser; }'

passes names
refuses names docs/operation-names.tsv 2 'an operation without a comment' <<<$'A\ttrim:\nA\tpad:'
refuses names docs/operation-names.tsv 1 'a longer name for a shorter one' <<<$'A\ttrim'
good_tree; printf '%s\n' '/// As `pad:` does.' '// `pad:`: not a doc comment' >quorvel/Utility/Pad.h
printf 'A\tpad:\n' >docs/operation-names.tsv
if run names >/dev/null; then complain 'names passes a name that heads no doc comment'; fi
rm -f quorvel/Utility/Pad.h

passes headers
refuses headers quorvel/Utility/Needy.h 1 'a header that needs another' <<<$'#pragma once\ninline std::size_t size();'
refuses headers quorvel/Utility/Once.h 1 'a header without a guard' <<<'inline int once() { return 1; }'

passes style
refuses style quorvel/Utility/Blank.h 1 'white space at a line end' <<<'int a; '
refuses style quorvel/Utility/Tab.cpp 2 'a tab' <<<$'int a;\n\tint b;'
refuses style quorvel/Utility/Crlf.h 1 'a carriage return' <<<$'int a;\r'
refuses style quorvel/Utility/Who.h 2 'an author' <<<$'// Texts.\n// Created by Somebody on a day.'
printf 'int a;' | refuses style quorvel/Utility/Cut.h 1 'a file without a last line end'
refuses style quorvel/Utility/Fast.cpp 1 'multiversioning under ThreadSanitizer' <<<'[[gnu::target_clones("avx2", "default")]] int f();'

good_tree
rm -f quorvel/Platform/Security/Key.cpp apps/quorvel/main.cpp  # their order of includes is for another check
run format >/dev/null 2>&1 || complain "format refuses formatted files: $(run format 2>&1)"
printf 'int  a ;\n' >quorvel/Utility/Loose.h
if run format >/dev/null 2>&1; then complain 'format passes loose text'; fi
rm -f quorvel/Utility/Loose.h

# usage: tidy_accepts CODE
tidy_accepts() {
  printf '%s\n' "$1" >quorvel/Utility/Tidy.cpp
  run tidy >"$scratch/tidy.log" 2>&1
}
tidy_accepts 'static int* plainName() { return nullptr; } int main() { return plainName() == nullptr ? 0 : 1; }' ||
  complain "tidy refuses good code: $(cat "$scratch/tidy.log")"
if tidy_accepts 'static int plain_name() { return 0; } int main() { return plain_name(); }'; then
  complain 'tidy passes a name in another style'
fi
if tidy_accepts 'static int* plainName() { return 0; } int main() { return plainName() == nullptr ? 0 : 1; }'; then
  complain 'tidy passes 0 for a pointer'
fi

[ ! -s "$complaints" ]
