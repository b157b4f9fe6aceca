#!/bin/bash
# The names that the built library exports, against its headers: each C call that the C headers
# declares is a function without decoration, and no other function is; each variable that a header
# declares "extern" is a data symbol.
# usage: exports.sh NM LIBRARY SOURCE_FOLDER
set -euo pipefail
nm=$1
library=$2
cd "$3"
wrong=0
complain() {
    echo "wrong: $*"
    wrong=1
}

exported=$("$nm" -D --defined-only "$library")
symbols() { awk -v types="$1" '$2 ~ "^[" types "]$" { print $3 }' <<<"$exported" | sort; }

# The function names between extern "C" and its end.
calls=$(sed -n '/^extern "C" {/,/^}/p' core/CFunctions.h core/TarselIDL.h | sed -nE 's/^[a-z ]+\*?([A-Z][A-Za-z]+)\(.*/\1/p' | sort)
plain=$(symbols T | grep -v '^_' || true)
[[ $(wc -w <<<"$calls") -gt 10 ]] || complain "too few calls found in the C header: $calls"
[[ $calls == "$plain" ]] || complain "the C calls:" $'\n'"$(diff <(echo "$calls") <(echo "$plain"))"

variables=$(sed -nE 's/^extern ([^(]*[ *])([A-Za-z]+);.*/\2/p' types/*.h core/*.h system/*.h | sort)
data=$(symbols BDRV)
[[ $(wc -w <<<"$variables") -gt 10 ]] || complain "too few variables found in headers: $variables"
missing=$(comm -23 <(echo "$variables") <(echo "$data"))
[[ -z $missing ]] || complain "no data symbols:" $missing
for name in npos DFMax pi LenLD LDelim DEmptyString MaxParticleBatch; do
    grep -qx "$name" <(symbols RD) || complain "$name is no constant"
done
for name in Logging Silent PublicWrite QNot SheetData TrIni Expt DLib; do
    grep -qx "$name" <(symbols BD) || complain "$name is not writable data"
done

# Every operation of the interface is a function of the library, for arrays that of each element.
functions=$("$nm" -DC --defined-only "$library" | cut -d' ' -f3- | sed 's/\[abi:[a-z0-9]*\]//g')
elements=("unsigned char" short int long float double bool "void*" DString DStringArray Waveform Matrix
    GroupName GroupCue DataPtr Object)
operations=()
for name in $(grep -v '^#' tests/core/interface.txt); do
    if [[ $name == ARRAY::* ]]; then
        for element in "${elements[@]}"; do operations+=("DArray<$element>::${name#ARRAY::}"); done
    else
        operations+=("$name")
    fi
done
[[ ${#operations[@]} -gt 500 ]] || complain "too few operations listed: ${#operations[@]}"
missing=$(awk '
    NR == FNR { line[n++] = $0; next }
    { for (i = 0; i < n && index(line[i], $0 "(") != 1; ++i); if (i == n) print }
' <(echo "$functions") <(printf '%s\n' "${operations[@]}"))
[[ -z $missing ]] || complain "no functions of the library:" $'\n'"$missing"
exit $wrong
