#!/usr/bin/env bash
# Builds TorvikPosSync, starts a demo chain of a back office and five tills, and opens the program on it. Without a display
# it does so under a virtual one, and the program does a whole night by itself: it fetches, accumulates, sends, saves its
# logs and mails them to a mail server started for it. Everything it writes is in the folder try/.
#   ./try.sh          ends when the program has been closed, or its night has ended
#   ./try.sh --keep   leaves the demo chain running until Ctrl-C
set -euo pipefail
cd "$(dirname "$0")"

keep=
case "${1:-}" in
    --keep) keep=1 ;;
    "") ;;
    *) sed -n '2,6s/^# \{0,1\}//p' "$0"; exit 2 ;;
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
build/dev/bin/torvik-sandbox --chain "$chain" --till-hosts 127.0.1.1 --sa-password "$password" >"$folder/chain.txt" 2>&1 &
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
tills=()
databases=("back office|${office%:*}|${office##*:}|sa|$password|TorvikBackOffice")
while read -r _ till _ address _ database _; do
    databases+=("till $till|${address%,*}|${address##*,}|pos|Pos-1|$database")
    tills+=("${address%,*}")
done < <(grep '^till ' "$folder/chain.txt")

echo "== The tills' file shares"
if ! [ -x /usr/sbin/smbd ]; then
    shares="none: samba is not installed"
elif [ "$(id -u)" -ne 0 ]; then
    shares="none: only root may listen on their port, 445"
else
    scripts/demo_shares "$folder/shares" pos Pos-1 "${tills[@]}" >"$folder/shares.txt" 2>&1 &
    shares_pid=$!
    pids+=("$shares_pid")
    shares="none: samba did not start, see $folder/shares.txt"
    for _ in $(seq 100); do
        kill -0 "$shares_pid" 2>/dev/null || break
        (exec 3<>"/dev/tcp/${tills[-1]}/445") 2>/dev/null && { shares="\\\\${tills[0]}\\C\$ and so on, each a folder of $folder/shares"; break; }
        sleep 0.1
    done
fi
echo "$shares"

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
# Mail goes to port 25, which only root may listen on.
mail=
if [ -n "$headless" ] && [ "$(id -u)" -eq 0 ]; then
    /usr/bin/python3 tests/shell/night/smtp_server.py "$folder/mail.json" --port 25 >"$folder/mail-server.txt" 2>&1 &
    pids+=($!)
    for _ in $(seq 100); do [ -s "$folder/mail-server.txt" ] && break; sleep 0.1; done
    [ "$(cat "$folder/mail-server.txt")" = 25 ] && mail=1
fi
# The clock of the automatic run ticks every 30 seconds; the minute three quarters of a minute ahead is never missed. A
# night that ends within its minute would begin again at the next tick: with 5 seconds between two tills it does not.
cat >"$folder/settings/Vestmar/TorvikPosSync.conf" <<CONF
[General]
Timeout=5
KunHent=false
AutoStartTime=$(date -d '+45 seconds' +%H:%M):00
cbAutoStart=$([ -n "$headless" ] && echo true || echo false)

[Smtp]
AutomaticAccumulate=true
AutomaticUpdateStatistics=true
Active=$([ -n "$mail" ] && echo true || echo false)
Server=127.0.0.1
Sender=kasse@torvik.example
Receipients="drift@torvik.example,vakt@torvik.example"
CONF

run_program() { # takes the shell's place: call it in one of its own
    cd "$folder/temp"
    [ -n "${XDG_RUNTIME_DIR:-}" ] || { mkdir -m 700 runtime && export XDG_RUNTIME_DIR=$folder/temp/runtime; }
    TMPDIR=$folder/temp XDG_CONFIG_HOME=$folder/settings exec "$folder/program/TorvikPosSync"
}

if [ -n "$headless" ]; then
    echo "== No display: opening the program on a virtual one, armed for a night that begins at the next full minute"
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
    [ -z "$mail" ] || for _ in $(seq 100); do [ -s "$folder/mail.json" ] && break; sleep 0.1; done
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
echo "== Logs: $folder/program/TorvikPos.log"
for night in "$folder"/program/Log/*/TorvikPos.rtf; do
    [ -e "$night" ] && (cd "${night%/*}" && echo "   of the night, in $PWD:" && ls -l | awk 'NR > 1 { print "     " $NF, $5, "bytes" }')
done
if [ -s "$folder/mail.json" ]; then
    echo "== Mail"
    /usr/bin/python3 - "$folder/mail.json" <<'PYTHON'
import json, sys
for line in open(sys.argv[1], encoding="utf-8"):
    mail = json.loads(line)
    print("   from", mail["from"], "to", mail["to"])
    print("   subject:", mail["subject"])
    print("   text:", mail["body"].strip())
    for name, content in mail["attachments"].items():
        print("   attached:", name, len(content), "bytes")
PYTHON
fi
[ -z "$headless" ] || echo "== Screenshot: $folder/screenshot.png"

rows_of() { # FILE-PREFIX TABLE
    awk -F '\t' -v table="$2" 'tolower($1) == tolower(table) { print $2 }' "$folder/$1 back office.txt"
}
errors=$(wc -l <"$folder/program/TorvikPosError.log" 2>/dev/null || echo 0)
echo
echo "The back office has $(rows_of after PosOppgjor) settlements and $(rows_of after PosOrdre) sales; before there were $(rows_of before PosOppgjor) and $(rows_of before PosOrdre)."
echo "The days' sales that the reports read are $(rows_of after PosDagsalg) rows; the error log has $errors lines."
if [ -s "$folder/mail.json" ]; then echo "The night's logs are saved and have been mailed."; else echo "The logs are saved; no mail was sent."; fi

if [ -n "$keep" ]; then
    echo "== The demo chain is running. Connect with, for example:"
    for entry in "${databases[@]}"; do
        IFS='|' read -r name host port user secret database <<<"$entry"
        echo "  tsql -H $host -p $port -U $user -P $secret -D $database     # $name"
    done
    [ "${shares#none}" != "$shares" ] || echo "  smbclient '//${tills[0]}/C\$' -U pos%Pos-1     # the share of till 1; the others likewise"
    echo "Ctrl-C ends it."
    wait "$chain_pid" || true
fi
