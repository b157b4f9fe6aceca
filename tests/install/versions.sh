#!/bin/bash
# The installed library's file is named after the version, and programs that link it ask for the
# major version alone.
# usage: versions.sh PREFIX
set -euo pipefail
library=$(find "$1" -name libTarsel.so)

diff <(basename "$(readlink -f "$library")") <(echo libTarsel.so.1.0.0)
diff <(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p') <(echo libTarsel.so.1)
[[ -e $(dirname "$library")/libTarsel.so.1 ]]
