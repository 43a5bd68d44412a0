#!/usr/bin/env bash
# aravis.sh WORK TOOL: a live camera, Aravis's own fake one on the loopback. Exit code 77: there is no Aravis
# or no loopback here.
set -euo pipefail
work=$1 tool=$2
camera=arv-fake-gv-camera-0.8
[[ -x $work/build/aravis_live ]] && command -v "$camera" >/dev/null ||
  { echo "skipped: no libaravis-dev, libusb-1.0-0-dev and aravis-tools here" && exit 77; }
(: >/dev/udp/127.0.0.1/9) 2>/dev/null || { echo "skipped: no loopback network here" && exit 77; }
cd -- "$work"
rm -f live.bmp
"$camera" -i 127.0.0.1 -s PrismoTest >camera.log 2>&1 &
trap 'kill "$!"' EXIT

live() { build/aravis_live --camera 127.0.0.1 "$@"; }
for _ in {1..20}; do  # until the camera listens
  if live --format BayerRG8 --frames 10 --bmp live.bmp >log 2>errors; then break; fi
  sleep 0.5
done
cat log errors camera.log
grep -qE '^512x512: [0-9.]+ frames/s, 10 converted, [0-9]+ lost$' log
"$tool" compare live.bmp live.bmp | grep -q '^all *identical'

if live --format Mono7 --frames 1 2>errors; then exit 1; fi
grep -q Mono7 errors
if build/aravis_live --camera nobody --frames 1 2>errors; then exit 1; fi
grep -q nobody errors
