#!/usr/bin/env bash
# What the built plug-in shows to others.  tests/plugin/artefact_test.sh PLUGIN
set -euo pipefail

plugin=$1
failed=0
complain() { echo "artefact: $1" >&2; failed=1; }
has() { grep -qE "$2" <<<"$1" || complain "$3"; }
lacks() { ! grep -qE "$2" <<<"$1" || complain "$3"; }
# Every line matches the pattern.
holds_only() { ! grep -vE "$2" <<<"$1" || complain "$3"; }

dynamic=$(readelf -dW "$plugin")
segments=$(readelf -lW "$plugin")
code=$(objdump -d --no-show-raw-insn "$plugin")
defined=$(nm -D --defined-only "$plugin" | awk '{ print $NF }')
undefined=$(nm -D --undefined-only "$plugin" | awk '$1 == "U" { print $2 }')
needed=$(sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' <<<"$dynamic")

holds_only "$defined" '^wendle_plugin_query$' "exports more than its one function"
has "$segments" GNU_RELRO "relocations stay writable"
has "$dynamic" 'BIND_NOW|Flags:.* NOW' "symbols are bound lazily"
has "$segments" 'GNU_STACK.* RW +0x' "the stack is executable"
lacks "$segments" 'LOAD.* RWE' "a segment is writable and executable"
lacks "$dynamic" 'TEXTREL' "code is relocated at load"
lacks "$dynamic" 'RPATH|RUNPATH' "a search path is built in"
has "$undefined" '__stack_chk_fail' "no stack protector"
entry=$(sed -n '/<wendle_plugin_query.*>:$/{n;p}' <<<"$code")
has "$entry" 'endbr64' "calls may land anywhere: no control-flow marks"
has "$code" 'or[lq] +\$0x0,.*\(%rsp\)' "large frames skip the guard page: no stack-clash protection"
has "$undefined" '__v?snprintf_chk' "no fortified functions"
# The C and C++ libraries, maths, and libgcc_s: the unwinder, without which no exception is caught.
holds_only "$needed" '^(libc\.so\.6|libm\.so\.6|libstdc\+\+\.so\.6|libgcc_s\.so\.1)$' \
  "needs more libraries"
holds_only "$undefined" '@(GLIBC|GLIBCXX|CXXABI|GCC)_[0-9.]+$' \
  "undefined symbols of other libraries"
exit $failed
