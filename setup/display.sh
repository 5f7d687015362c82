# SPDX-License-Identifier: MIT
#
# A virtual display with a window manager, for windows that nobody looks at.
# Sourced after common.sh.

display_pids=()

# start_display FOLDER: sets and exports DISPLAY; logs go to FOLDER.
start_display() {
  local folder=$1 number tries
  mkdir -p -- "$folder"
  : >"$folder/display.number"
  # The server itself picks a free number, so two runs cannot collide. It runs
  # in a process group of its own: Ctrl-C must not end it before the programs.
  setsid Xvfb -displayfd 7 -screen 0 1920x1080x24 -nolisten tcp \
    7>"$folder/display.number" >"$folder/display.log" 2>&1 </dev/null 8>&- &
  display_pids=($!)
  for ((tries = 0; tries < 200; ++tries)); do
    number=$(cat -- "$folder/display.number")
    [ -z "$number" ] || break
    kill -0 "${display_pids[0]}" 2>/dev/null ||
      fail "the virtual display did not start (log: $folder/display.log)"
    sleep 0.05
  done
  [ -n "$number" ] || fail "the virtual display did not start within 10 s"
  export DISPLAY=:$number
  unset WAYLAND_DISPLAY XAUTHORITY

  # Wine's dialogs come up properly only under a window manager. Its stock
  # configuration: the user's own might place windows elsewhere.
  setsid openbox --config-file /etc/xdg/openbox/rc.xml \
    >>"$folder/display.log" 2>&1 </dev/null 8>&- &
  display_pids+=($!)
  for ((tries = 0; tries < 200; ++tries)); do
    if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q '#'; then
      return
    fi
    sleep 0.05
  done
  fail "the window manager did not start within 10 s"
}

stop_display() {
  local index
  for ((index = ${#display_pids[@]} - 1; index >= 0; --index)); do
    kill "${display_pids[index]}" 2>/dev/null || true
    wait "${display_pids[index]}" 2>/dev/null || true
  done
  display_pids=()
}
