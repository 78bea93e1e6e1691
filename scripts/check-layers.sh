#!/usr/bin/env bash
# House rules that the compiler does not enforce:
#  - a file under src/ includes nothing from a layer above its own (a header-only include would
#    still link), and sim/ includes only base/;
#  - only src/ui and src/app include Qt Widgets.
# Prints every offending line; exits 1 when there is one.
set -euo pipefail
cd "$(dirname "$0")/.."

# Bottom to top.
layers=(base form link files client exporter viewer graph panel ui app)
rank() {
    local i
    for i in "${!layers[@]}"; do
        if [ "${layers[$i]}" = "$1" ]; then
            echo "$i"
            return
        fi
    done
    echo -1
}

bad=0
report() {
    echo "layers: $1"
    bad=1
}

while IFS= read -r file; do
    own=${file#src/}
    own=${own%%/*}
    [ "$file" = "${file#sim/}" ] || own=sim
    own_rank=$(rank "$own")
    while IFS= read -r line; do
        target=$(sed -E 's/^[0-9]+:#include "(\.\.\/)?([A-Za-z_]+)\/.*/\2/' <<<"$line")
        [ "$target" = "$own" ] && continue
        if [ "$own" = sim ]; then
            [ "$target" = base ] || report "$file:$line (sim/ uses base/ only)"
            continue
        fi
        if [ "$target" = sim ]; then
            [ "$own" = app ] || report "$file:$line (only app/ starts the simulator)"
            continue
        fi
        target_rank=$(rank "$target")
        [ "$target_rank" -ge 0 ] || continue
        if [ "$target_rank" -gt "$own_rank" ]; then
            report "$file:$line ($own/ is below $target/)"
        fi
    done < <(grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"(\.\./)?[A-Za-z_]+/' "$file" |
        sed -E 's/^([0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*/\1:#include /' || true)
    case "$own" in
    ui | app) ;;
    *)
        grep -nE '#[[:space:]]*include[[:space:]]*<(QtWidgets/|QApplication>|QWidget>|QMainWindow>|QDialog>|QMessageBox>|QLabel>|QPushButton>|QPainter>)' "$file" |
            while IFS= read -r line; do echo "layers: $file:$line (Qt Widgets outside ui/)"; done | grep . && bad=1
        ;;
    esac
done < <(git ls-files 'src/*.h' 'src/*.cpp' 'sim/*.h' 'sim/*.cpp')

if [ "$bad" -ne 0 ]; then
    echo "layers: see the order in the README's Layout" >&2
    exit 1
fi
echo "layers: every include points down"
