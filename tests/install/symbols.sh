#!/bin/bash
# The names that the installed library shows: its versions, the C calls without decoration, and the
# data that hosts and plug-ins read.
# usage: symbols.sh PREFIX
set -euo pipefail
library=$(find "$1" -name libTarsel.so)
wrong=0
complain() {
    echo "wrong: $*"
    wrong=1
}

[[ $(basename "$(readlink -f "$library")") == libTarsel.so.1.0.0 ]] || complain "the version"
readelf -d "$library" | grep -q 'SONAME.*\[libTarsel\.so\.1\]' || complain "the SONAME"

symbols=$(nm -D --defined-only "$library")
expect() {
    local types=$1
    shift
    for name; do
        grep -Eq " [$types] $name\$" <<<"$symbols" || complain "no symbol $name of type $types"
    done
}

expect T InitializeTarselC TestFuncC CSleep NotifyC GetStringC GetNodesC SetExperimentC CreateShotC \
    SetShotC GetStringDataC SetStringDataC GetScalarDataC GetScalarDataSafeC SetScalarDataC \
    GetWaveformInfoC GetWaveformC SetWaveformC SetWaveformXYC
expect BDRV npos DFMax pi LenLD LDelim DEmptyString MaxParticleBatch Logging Silent PublicWrite \
    QNot SheetData TrIni Expt
exit $wrong
