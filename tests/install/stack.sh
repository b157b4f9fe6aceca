#!/bin/bash
# Runs the example of images and particles twice in one experiment and checks what it prints and
# leaves on disk. The figures follow from the formulas in the example.
# usage: stack.sh STACK
set -euo pipefail
stack=$1

rm -rf Optics
"$stack" "$PWD/Optics" >first.txt
"$stack" "$PWD/Optics" >second.txt
cat first.txt
diff first.txt second.txt

expect() {
    grep -qF -- "$1" <(tr -s ' ' <first.txt) || { echo "not printed: $1"; exit 1; }
}
expect 'Spot\mx 99.5 counts' # 100 exp(-0.05^2 - 0.05^2): the pixels around the middle
expect 'Spot\lc 10 '
expect 'Spot\l1*1000 2 ms'
expect 'Spot\rc*Spot\cc 3072 '
expect 'Ring\np 1000 '
expect 'row 33 of 64; its last frame is at 0.018 s'
expect '0.02 m out and moves outwards at 3 m/s'

# Header, three axes, numbers, texts and 64 * 48 * 10 values; header, texts and 1000 particles.
size() { stat -c %s "Optics/Shots/Shot1/$1"; }
[[ $(size Spot.dmt) == 123040 ]] || { echo "wrong size: Spot.dmt"; exit 1; }
[[ $(size Ring.dpt) == 32143 ]] || { echo "wrong size: Ring.dpt"; exit 1; }
