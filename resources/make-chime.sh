#!/usr/bin/env bash
# Regenerates the caution chime, localcaution.mp3, from nothing but sox and
# lame (Debian packages "sox" and "lame").
#
# The chime is a falling two-tone "ding-dong" (E6 then B5) followed by a
# short silence, 0.62 s in all, so that a hazard warning (three plays back to
# back) lasts under two seconds and each play stays a separate, countable
# burst. Both tools run without randomness (-R, no dither), so the same tool
# versions give the same file byte for byte.
#
# Usage: resources/make-chime.sh [OUTPUT]   (default: beside this script)
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
out="${1:-$here/localcaution.mp3}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

rate=44100
# High tone: 0.22 s, 5 ms ramps so the note starts and ends without a click.
sox -R -D -n -r $rate -c 1 -b 16 "$work/hi.wav" \
  synth 0.22 sine 1318.5 fade q 0.005 0.22 0.005
# Low tone: 0.30 s, dying away over its last quarter second like a struck bell.
sox -R -D -n -r $rate -c 1 -b 16 "$work/lo.wav" \
  synth 0.30 sine 987.8 fade q 0.005 0.30 0.25
# Both tones, then 0.10 s of silence, peaking at -3 dBFS.
sox -R -D "$work/hi.wav" "$work/lo.wav" -b 16 "$work/chime.wav" \
  pad 0 0.10 gain -n -3

# Mono constant bit rate, no ID3 tag, no replay-gain analysis.
lame --quiet -m m -b 96 --cbr --noreplaygain -q 2 "$work/chime.wav" "$out"
echo "wrote $out"
