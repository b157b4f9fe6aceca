#!/bin/bash
# Runs the example twice in one experiment and compares its figures with those that awk finds in the
# data, by the rules of the parameters "mx" and "19".
# usage: peak.sh PEAK DATA.csv
set -euo pipefail
peak=$1 data=$2

rm -rf Discharge
"$peak" "$PWD/Discharge" "$data" >first.txt
"$peak" "$PWD/Discharge" "$data" >second.txt
cat first.txt
diff first.txt second.txt

# The greatest current, and the times at which the current first passes 10 % and 90 % of it, between
# the points on a straight line.
awk -F, '
    BEGIN { n = 0 }
    /^#/ { next }
    { t[n] = $1; x[n] = $2; if (n == 0 || $2 > max) max = $2; ++n }
    function passes(level,    k) {
        for (k = 1; x[k] <= level; ++k);
        return t[k - 1] + (level - x[k - 1]) / (x[k] - x[k - 1]) * (t[k] - t[k - 1])
    }
    END { printf "%.7g %.7g\n", 2 * max, passes(0.9 * max) - passes(0.1 * max) }
' "$data" >expected.txt
read -r doubled rise <expected.txt

# The library computes in single precision.
close_to() {
    awk -v a="$1" -v b="$2" 'BEGIN { d = a - b; exit !(b > 0 && d * d < 1e-10 * b * b) }' ||
        { echo "wrong: $1 is not close to $2"; exit 1; }
}
close_to "$(awk '$1 == "I\\mx*2" { print $2 }' first.txt)" "$doubled"
close_to "$(awk '$1 == "I\\19" { print $2 }' first.txt)" "$rise"
close_to "$(awk '$1 == "bol(Valid)" { print $2 }' first.txt)" 1
close_to "$(awk '/A$/ && $3 == "A" && $4 == "peak" { print $5 }' first.txt)" "$doubled"
