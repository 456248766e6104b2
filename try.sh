#!/usr/bin/env bash
# Builds TorvikPosSync, starts a demo chain of a back office and five tills, and opens the program on it. Without a display
# it does so under a virtual one, and the program fetches by itself. Everything it writes is in the folder try/.
#   ./try.sh          ends when the program has been closed, or has fetched
#   ./try.sh --keep   leaves the demo chain running until Ctrl-C
set -euo pipefail
cd "$(dirname "$0")"

keep=
case "${1:-}" in
    --keep) keep=1 ;;
    "") ;;
    *) sed -n '2,5s/^# \{0,1\}//p' "$0"; exit 2 ;;
esac

folder=$PWD/try
password=Torvik-Sandbox-1
chain=departments=3,tills=5,days=2,seed=7
pids=()

stop() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
    pids=()
}
trap stop EXIT
trap 'exit 130' INT TERM

echo "== Installing and building"
scripts/setup.sh
cmake --preset dev >/dev/null
cmake --build --preset dev --target TorvikPosSync torvik-sandbox | tail -n 1

echo "== Starting the demo chain ($chain)"
rm -rf "$folder"
mkdir -p "$folder"/{program,settings/Vestmar,temp}
build/dev/bin/torvik-sandbox --chain "$chain" --sa-password "$password" >"$folder/chain.txt" 2>&1 &
chain_pid=$!
pids+=("$chain_pid")
for _ in $(seq 300); do
    grep -q '^data link: ' "$folder/chain.txt" && break
    kill -0 "$chain_pid" 2>/dev/null || { cat "$folder/chain.txt"; exit 1; }
    sleep 0.1
done
grep -q '^data link: ' "$folder/chain.txt" || { echo "the demo chain did not start in 30 seconds"; exit 1; }
grep -v '^data link: ' "$folder/chain.txt"
office=$(sed -n 's/^listening on //p' "$folder/chain.txt")

# name|host|port|user|password|database of each database
databases=("back office|${office%:*}|${office##*:}|sa|$password|TorvikBackOffice")
while read -r _ till _ address _ database _; do
    databases+=("till $till|${address%,*}|${address##*,}|pos|Pos-1|$database")
done < <(grep '^till ' "$folder/chain.txt")

count_rows() { # FILE-PREFIX
    for entry in "${databases[@]}"; do
        IFS='|' read -r name host port user secret database <<<"$entry"
        scripts/table_rows "$host" "$port" "$user" "$secret" "$database" |
            LC_ALL=C sort >"$folder/$1 ${name//\//-}.txt"
    done
}
count_rows before

echo "== Writing data link, ini file and settings to try/program and try/settings"
cp build/dev/bin/TorvikPosSync "$folder/program/"
{
    printf '\xff\xfe'
    printf '[oledb]\r\n; Everything after this line is an OLE DB initstring\r\n%s\r\n' \
        "$(sed -n 's/^data link: //p' "$folder/chain.txt")" | iconv -f UTF-8 -t UTF-16LE
} >"$folder/program/Torvik.UDL"
printf '[Filter]\nButikktyper=\n' >"$folder/program/TorvikPosSync.ini"
headless=
[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] || headless=1
# The clock of the automatic run ticks every 30 seconds; the minute three quarters of a minute ahead is never missed.
cat >"$folder/settings/Vestmar/TorvikPosSync.conf" <<CONF
[General]
Timeout=1
KunHent=true
AutoStartTime=$(date -d '+45 seconds' +%H:%M):00
cbAutoStart=$([ -n "$headless" ] && echo true || echo false)
CONF

run_program() { # takes the shell's place: call it in one of its own
    cd "$folder/temp"
    [ -n "${XDG_RUNTIME_DIR:-}" ] || { mkdir -m 700 runtime && export XDG_RUNTIME_DIR=$folder/temp/runtime; }
    TMPDIR=$folder/temp XDG_CONFIG_HOME=$folder/settings exec "$folder/program/TorvikPosSync"
}

if [ -n "$headless" ]; then
    echo "== No display: opening the program on a virtual one, armed to fetch at the next full minute"
    Xvfb -displayfd 3 -screen 0 1400x900x24 -nolisten tcp 3>"$folder/display.txt" 2>/dev/null &
    pids+=($!)
    for _ in $(seq 100); do [ -s "$folder/display.txt" ] && break; sleep 0.1; done
    DISPLAY=:$(cat "$folder/display.txt")
    export DISPLAY
    run_program &
    program_pid=$!
    pids+=("$program_pid")
    for _ in $(seq 1800); do
        compgen -G "$folder/program/Log/*/TorvikPosError.rtf" >/dev/null && break
        kill -0 "$program_pid" 2>/dev/null || { echo "the program ended before it had fetched"; exit 1; }
        sleep 0.1
    done
    compgen -G "$folder/program/Log/*/TorvikPosError.rtf" >/dev/null || { echo "the program did not fetch within three minutes"; exit 1; }
    sleep 1
    import -window root "$folder/screenshot.png"
    kill -TERM "$program_pid"
    wait "$program_pid" || { echo "the program ended with exit code $?"; exit 1; }
else
    echo "== Opening the program. \"Ta oppgjør manuelt\" fetches; close the window to go on."
    (run_program) || { echo "the program ended with exit code $?"; exit 1; }
fi

count_rows after
echo "== Rows by table, before -> after"
for entry in "${databases[@]}"; do
    name=${entry%%|*}
    echo "$name"
    LC_ALL=C join -t "$(printf '\t')" -a 2 -e 0 -o 0,1.2,2.2 "$folder/before ${name//\//-}.txt" "$folder/after ${name//\//-}.txt" |
        awk -F '\t' '$2 != 0 || $3 != 0 { printf "  %-34s %6d -> %6d%s\n", $1, $2, $3, $2 == $3 ? "" : "  *" }'
done
echo "== Logs: $folder/program/Log, $folder/program/TorvikPos.log"
[ -z "$headless" ] || echo "== Screenshot: $folder/screenshot.png"

if [ -n "$keep" ]; then
    echo "== The demo chain is running. Connect with, for example:"
    for entry in "${databases[@]}"; do
        IFS='|' read -r name host port user secret database <<<"$entry"
        echo "  tsql -H $host -p $port -U $user -P $secret -D $database     # $name"
    done
    echo "Ctrl-C ends it."
    wait "$chain_pid" || true
fi
