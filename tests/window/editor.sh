# What the sessions in a real window share. Sourced with bin, source and pictures set, under an X server of its own.
root=$(mktemp -d)
editor= manager= window=
log=$root/bin/editor.log
settings=$root/bin/pavex.ini
track=$root/data/tracks/lakeside
cleanup() {
  [ -n "$editor" ] && kill -KILL "$editor" 2>/dev/null || true
  [ -n "$manager" ] && kill "$manager" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$root"
}
trap cleanup EXIT
fail() { echo "FAILED: $*"; tr "\r" "\n" <"$log" | tail -n 20 2>/dev/null || true; exit 1; }
tool() { "$bin/pavex-tool" --quiet --root "$root" "$@"; }
picture() { import -window root "$pictures/$1.png"; }
# A step is over when the picture holds still long enough for its frame, software drawing being slow.
pause() { sleep "${1:-0.7}"; }

# A data root with the demo circuit, which the editor opens in its first mode, seen as the transform says.
make_root() {
  mkdir -p "$root/bin" "$pictures"
  cp -r "$source/data" "$root/data"
  rm -rf "$root/data/tracks"
  [ -d "$source/images" ] && cp -r "$source/images" "$root/"
  cp "$source/torvik.ini" "$root/"
  "$bin/pavex-demo" --root "$root" >/dev/null
  # The first save rounds numbers to the form that the editor writes; from there on each difference is the session's.
  tool track save lakeside
  cp "$source/data/settings/pavex.ini" "$settings"
  tool ini set "$settings" track.lasttrack lakeside
  tool ini set "$settings" settings.auto_load 1
  tool ini set "$settings" settings.mode 0
  tool ini set "$settings" settings.transform "$1"
  tool ini set "$settings" resolution.x 0
  tool ini set "$settings" resolution.y 0
}

start_manager() {
  openbox >/dev/null 2>&1 &
  manager=$!
  for _ in $(seq 100); do
    xdotool get_num_desktops >/dev/null 2>&1 && break
    sleep 0.1
  done
}

start_editor() {
  (cd "$root/bin" && exec "$bin/pavex" >editor.log 2>&1) &
  editor=$!
  window=
  for _ in $(seq 200); do
    window=$(xdotool search --onlyvisible --name '^Pavex' 2>/dev/null | head -n1 || true)
    [ -n "$window" ] && break
    kill -0 "$editor" 2>/dev/null || fail "the editor ended at its start"
    sleep 0.1
  done
  [ -n "$window" ] || fail "no window"
  # A window that became active meanwhile would be waited for in vain.
  timeout 5 xdotool windowactivate --sync "$window" 2>/dev/null || true
  for _ in $(seq 100); do
    grep -q 'Load visible objects done' "$log" 2>/dev/null && break
    sleep 0.2
  done
  pause 3
}

leave_editor() {
  xdotool key shift+q
  for _ in $(seq 50); do
    kill -0 "$editor" 2>/dev/null || break
    sleep 0.1
  done
  kill -0 "$editor" 2>/dev/null && fail "Shift-Q didn't leave"
  local status=0
  wait "$editor" || status=$?
  editor=
  [ "$status" -eq 0 ] || fail "the editor left with status $status"
}
