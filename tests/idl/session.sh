#!/bin/bash
# Runs session.pro by the interpreter gdl, and checks what was printed and what stands on disk. The
# functions find the library as they are told to: named by TARSEL_LIBRARY, or installed two folders
# above them.
# usage: session.sh named|installed LIBRARY FUNCTIONS WORK_FOLDER
set -euo pipefail
found=$1 library=$2 functions=$3 work=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

if ! command -v gdl >/dev/null; then
    echo "skipped: gdl, the interpreter of GNU Data Language, is not installed"
    exit 77
fi

rm -rf "$work"
mkdir -p "$work/home" "$work/lib/tarsel/idl"
cd "$work"
cp "$functions" lib/tarsel/idl
if [[ $found == named ]]; then
    export TARSEL_LIBRARY=$library
else
    unset TARSEL_LIBRARY
    ln -s "$library" lib/libTarsel.so
fi

export HOME=$work/home SESSION_EXPERIMENT=$work/Lab GDL_PATH=$work/lib/tarsel/idl:$here
status=0
gdl -q "$here/run.pro" </dev/null >printed.txt 2>errors.txt || status=$?
cat printed.txt errors.txt
[[ $status == 0 ]] || { echo "the session ended with $status"; exit 1; }

diff - printed.txt <<'END'
Error creating shot (most likely it already exists and name did not have *)
Error setting shot (most likely it does not exist)
Error reading waveform info for Absent (most likely it does not exist)
Error reading waveform info for Absent (most likely it does not exist)
checked
END

# Everything there is on disk, and what stands in it; dates aside.
diff - <(find Lab home -type f | LC_ALL=C sort) <<'END'
Lab/Lab.ini
Lab/Shots/ScalarCache.ini
Lab/Shots/Shot7/Counts.wvf
Lab/Shots/Shot7/I.wvf
Lab/Shots/Shot7/Scalars.ini
Lab/Shots/Shot8/Scalars.ini
home/.Tarsel/Log.txt
home/.Tarsel/Tarsel.ini
END
without_dates() { tr -d '\r' <"$1" | sed -E 's:[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9:]{8}:DATE:'; }
diff - <(without_dates Lab/Shots/Shot7/Scalars.ini && echo) <<'END'
[Fields]
Date=DATE
Charge=2.5
Turns=12
Energy=1500
END
grep -q '^Initialized by IDL at DATE by ' <(without_dates home/.Tarsel/Log.txt)

# A trace: the number of points, the interval and the start in the header; the samples at the end.
values() { od -A n -w16 -v "$@" | xargs; }
[[ $(values -t d4 -j 4 -N 4 Lab/Shots/Shot7/I.wvf) == 4 ]]
[[ $(values -t f4 -j 12 -N 4 Lab/Shots/Shot7/I.wvf) == 0.5 ]]
[[ $(values -t f4 -j 28 -N 4 Lab/Shots/Shot7/I.wvf) == 10 ]]
[[ $(tail -c 16 Lab/Shots/Shot7/I.wvf | values -t f4) == "1 2 4 3" ]]
[[ $(tail -c 8 Lab/Shots/Shot7/Counts.wvf | values -t f4) == "5 6" ]]
