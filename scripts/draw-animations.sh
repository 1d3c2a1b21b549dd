#!/bin/bash
# Draws the four built-in animations of the media effect into src/ui/animations with ImageMagick.
# They are kept in the repository; run this again only to change them.
set -euo pipefail
out="$(cd "$(dirname "$0")/.." && pwd)/src/ui/animations"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
frames=24
size=48
calc() { awk "BEGIN { printf \"%.2f\", $1 }"; }

# Five bars rising and falling out of step, from teal to pink.
colours=("#34e0c8" "#3ab7ff" "#7f7bff" "#c86bff" "#ff5fa8")
for ((f = 0; f < frames; f++)); do
    args=()
    for ((b = 0; b < 5; b++)); do
        h=$(calc "8 + 30 * (0.5 + 0.5 * sin(6.2832 * ($f / $frames) * (1 + $b % 3) + $b * 1.9))")
        x=$((4 + b * 8))
        args+=(-fill "${colours[$b]}" -draw "roundrectangle $x,$(calc "44 - $h") $((x + 6)),44 3,3")
    done
    convert -size ${size}x${size} xc:none "${args[@]}" "$work/eq-$(printf %02d $f).png"
done

# A heart of pixels that beats twice and rests.
heart=(".XX...XX." "XXXX.XXXX" "XXXXXXXXX" "XXXXXXXXX" ".XXXXXXX." "..XXXXX.." "...XXX..." "....X....")
for ((f = 0; f < frames; f++)); do
    case $f in 2 | 3 | 7 | 8) cell=5 ;; *) cell=4 ;; esac
    shade=$([[ $cell == 5 ]] && echo "#ff4d6d" || echo "#e63950")
    ox=$(( (size - 9 * cell) / 2 )); oy=$(( (size - 8 * cell) / 2 ))
    args=()
    for ((r = 0; r < 8; r++)); do
        row=${heart[$r]}
        for ((c = 0; c < 9; c++)); do
            [[ ${row:$c:1} == X ]] || continue
            x=$((ox + c * cell)); y=$((oy + r * cell))
            args+=(-fill "$shade" -draw "rectangle $x,$y $((x + cell - 1)),$((y + cell - 1))")
        done
    done
    # A glint in the upper left lobe.
    args+=(-fill "#ffd0d8" -draw "rectangle $((ox + cell)),$((oy + cell)) $((ox + 2 * cell - 1)),$((oy + 2 * cell - 1))")
    convert -size ${size}x${size} xc:none "${args[@]}" "$work/heart-$(printf %02d $f).png"
done

# A cassette whose reels turn.
for ((f = 0; f < frames; f++)); do
    args=(-fill "#f2a93b" -draw "roundrectangle 2,10 45,38 4,4"
          -fill "#fff3d6" -draw "rectangle 7,14 40,20"
          -fill "#3b2a14" -draw "roundrectangle 12,23 35,33 4,4")
    for cx in 17 30; do
        args+=(-fill "#fff3d6" -draw "circle $cx,28 $cx,32")
        for ((s = 0; s < 3; s++)); do
            a=$(calc "6.2832 * ($f / $frames + $s / 3)")
            args+=(-stroke "#3b2a14" -strokewidth 1.5 -draw "line $cx,28 $(calc "$cx + 3.5 * cos($a)"),$(calc "28 + 3.5 * sin($a)")" -stroke none)
        done
    done
    args+=(-fill "#c9832a" -draw "polygon 12,38 15,34 32,34 35,38")
    convert -size ${size}x${size} xc:none "${args[@]}" "$work/cassette-$(printf %02d $f).png"
done

# A record turning: grooves, a label with a mark, and a sheen that stays where the light is.
for ((f = 0; f < frames; f++)); do
    a=$(calc "6.2832 * $f / $frames")
    args=(-fill "#111111" -draw "circle 24,24 24,2")
    for r in 19 16 13; do
        args+=(-fill none -stroke "#2a2a2a" -strokewidth 1 -draw "circle 24,24 24,$((24 - r))" -stroke none)
    done
    args+=(-fill "#ffffff22" -draw "path 'M 24,24 L 8,6 A 22,22 0 0,1 20,2 Z'"
           -fill "#ff6b3d" -draw "circle 24,24 24,16"
           -fill "#ffd1b8" -draw "circle $(calc "24 + 5 * cos($a)"),$(calc "24 + 5 * sin($a)") $(calc "24 + 5 * cos($a) + 1.6"),$(calc "24 + 5 * sin($a)")"
           -fill "#111111" -draw "circle 24,24 24,22.5")
    convert -size ${size}x${size} xc:none "${args[@]}" "$work/vinyl-$(printf %02d $f).png"
done

mkdir -p "$out"
convert -delay 5 -loop 0 -dispose background "$work"/eq-*.png "$out/equalizerBars.gif"
convert -delay 6 -loop 0 -dispose background "$work"/heart-*.png "$out/pixelHeart.gif"
convert -delay 5 -loop 0 -dispose background "$work"/cassette-*.png "$out/retroCassette.gif"
convert -delay 4 -loop 0 -dispose background "$work"/vinyl-*.png "$out/spinningVinyl.gif"
ls -l "$out"
