#!/bin/sh
# Usage: gallery_in_browser.sh KVX. Opens a gallery in headless Chromium: no console errors, all pictures there, search
# filters, slider moves. Exits 77 where the browser is missing.
set -eu
kvx=$1
command -v chromedriver >/dev/null && command -v chromium >/dev/null && command -v curl >/dev/null || exit 77
work=$(mktemp -d)
port=$((20000 + $$ % 20000))
# The browser outlives a driver that is stopped while a session is open.
trap 'kill $driver 2>/dev/null || true; pkill -f -- "$work/profile" 2>/dev/null || true; sleep 0.5; rm -rf "$work"' EXIT
"$kvx" gallery demo -o "$work/gallery" --width 96
chromedriver --port=$port >"$work/driver.log" 2>&1 &
driver=$!
base=http://127.0.0.1:$port
for _ in 1 2 3 4 5 6 7 8 9 10; do
  curl -sf "$base/status" >/dev/null && break
  sleep 0.5
done
post() { curl -sf -H 'Content-Type: application/json' -d "$2" "$base$1"; }
session=$(post /session '{"capabilities": {"alwaysMatch": {"browserName": "chrome", "goog:loggingPrefs": {"browser": "ALL"},
  "goog:chromeOptions": {"binary": "'"$(command -v chromium)"'", "args": ["--headless", "--no-sandbox", "--disable-gpu",
  "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync",
  "--user-data-dir='"$work"'/profile", "--window-size=1280,900"]}}}}' | sed 's/.*"sessionId":"\([^"]*\)".*/\1/')
run() { # prints the value of a script
  post "/session/$session/execute/async" '{"args": [], "script": "'"$1"'"}' | sed 's/^{"value"://; s/}$//'
}
post "/session/$session/url" '{"url": "file://'"$work"'/gallery/index.html"}' >/dev/null
expect() { # what, value, wanted
  [ "$2" = "$3" ] || { echo "$1: $2 instead of $3"; exit 1; }
}
broken=$(run "const done = arguments[0]; const images = [...document.images]; images.forEach(i => i.loading = 'eager'); Promise.all(images.map(i => i.decode().then(() => 0, () => 1))).then(r => done(r.reduce((a, b) => a + b, 0)));")
expect 'broken pictures' "$broken" 0
posters=$(run "const done = arguments[0]; Promise.all([...document.querySelectorAll('video')].map(v => new Promise(r => { v.onloadeddata = () => r(0); v.onerror = () => r(1); v.preload = 'auto'; v.load(); }))).then(r => done(r.reduce((a, b) => a + b, 0)));")
expect 'broken loops' "$posters" 0
cards=$(run "arguments[0](document.querySelectorAll('article').length)")
effects=$("$kvx" list --json | grep -c '"guid"')
expect 'cards' "$cards" "$effects"
found=$(run "search.value = 'thermal'; search.dispatchEvent(new Event('input')); arguments[0]([...document.querySelectorAll('article:not([hidden])')].map(a => a.querySelector('h3').textContent).join())")
expect 'search' "$found" '"Thermal 89"'
cut=$(run "const s = document.querySelector('article:not([hidden]) .slider'); s.value = 40; s.dispatchEvent(new Event('input')); arguments[0](getComputedStyle(s.previousElementSibling.querySelector('.after')).clipPath)")
expect 'slider' "$cut" '"inset(0px 0px 0px 40%)"'
named=$(run "arguments[0]([...document.querySelectorAll('img')].every(i => i.alt) && [...document.querySelectorAll('input')].every(i => i.ariaLabel))")
expect 'names for those who do not see' "$named" true
errors=$(post "/session/$session/se/log" '{"type": "browser"}' | grep -c '"level":"SEVERE"' || true)
expect 'console errors' "$errors" 0
curl -sf -X DELETE "$base/session/$session" >/dev/null
