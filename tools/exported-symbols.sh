#!/usr/bin/env bash
# The names a shared library exports, demangled, one per line, sorted; compared with a
# checked-in list so that any change of the exported set is seen and reviewed.
#
#   exported-symbols.sh list   <library>
#   exported-symbols.sh check  <library> <list file> [expected SONAME]
#   exported-symbols.sh update <library> <list file>
#
# Left out: the linker's own markers, sanitizer runtime hooks, and instantiations of the
# standard library's templates (their presence depends on inlining, not on our interface).
set -euo pipefail

exported_names() {
  nm -D --defined-only -P "$1" | awk '{ print $1 }' | c++filt |
    grep -Ev '^(_init|_fini|_edata|_end|__bss_start)$' |
    grep -Ev '^_*(asan|odr_asan|ubsan|tsan|lsan|sanitizer)' |
    grep -Ev '^((vtable|typeinfo|typeinfo name|VTT|construction vtable|guard variable) for )?(std|__gnu_cxx)::' |
    LC_ALL=C sort -u
}

usage() {
  echo "usage: $0 list <library> | check <library> <list> [soname] | update <library> <list>" >&2
  exit 2
}

mode="${1:-}"
library="${2:-}"
[[ -n "$mode" && -n "$library" ]] || usage
[[ -f "$library" ]] || { echo "no such library: $library" >&2; exit 1; }

case "$mode" in
  list)
    exported_names "$library"
    ;;
  update)
    [[ -n "${3:-}" ]] || usage
    exported_names "$library" >"$3"
    echo "wrote $(wc -l <"$3") names to $3"
    ;;
  check)
    [[ -n "${3:-}" ]] || usage
    list="$3"
    expected_soname="${4:-}"
    status=0
    soname="$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
    if [[ -z "$soname" ]]; then
      echo "$library has no SONAME"
      status=1
    elif [[ -n "$expected_soname" && "$soname" != "$expected_soname" ]]; then
      echo "$library has SONAME $soname, expected $expected_soname"
      status=1
    fi
    if ! diff -u --label "expected ($list)" --label "exported by $(basename "$library")" \
      "$list" <(exported_names "$library"); then
      echo
      echo "The exported names of $(basename "$library") changed (- no longer exported,"
      echo "+ newly exported). If the change is intended, review it and regenerate the list:"
      echo "  tools/exported-symbols.sh update $library $list"
      status=1
    fi
    [[ $status -eq 0 ]] && echo "$(basename "$library"): SONAME $soname, $(wc -l <"$list") names as listed"
    exit $status
    ;;
  *)
    usage
    ;;
esac
