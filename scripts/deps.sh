#!/usr/bin/env bash
# Installs the Debian packages Kelvane needs, only when some are missing.
# Usage: scripts/deps.sh build [test] [fuzz] [run]
set -euo pipefail

build=(cmake g++ make pkg-config qt6-base-dev qt6-declarative-dev qml6-module-qtquick
       qml6-module-qtquick-window qml6-module-qtqml-workerscript qml6-module-qtquick-controls
       qml6-module-qtquick-templates qml6-module-qtquick-layouts libgl-dev libx11-dev libcanberra-dev
       libgtest-dev libgmock-dev libbenchmark-dev fonts-dejavu-core libxi-dev libxext-dev libxcb1-dev libpulse-dev libpoppler-qt6-dev
       libecal2.0-dev libical-dev libqt6sql6-sqlite libsource-highlight-dev
       qt6-multimedia-dev libgstreamer1.0-dev libswscale-dev gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-pipewire
       libkissfft-dev libudev-dev qt6-shadertools-dev libqt6svg6 qml6-module-qtquick-dialogs qml6-module-qt-labs-folderlistmodel)
test=(python3-dbusmock evolution-data-server openbox wmctrl xvfb xauth x11-utils x11-xserver-utils xcompmgr libgl1-mesa-dri xdotool xclip dbus imagemagick sox mpv mpv-mpris pulseaudio pulseaudio-utils
      pipewire pipewire-bin wireplumber libglib2.0-bin gsettings-desktop-schemas desktop-file-utils
      appstream dpkg-dev man-db xdg-utils zsh bash-completion weston sway grim xwayland)
fuzz=(clang libfuzzer-14-dev)
run=(xvfb xauth x11-utils x11-xserver-utils xcompmgr libgl1-mesa-dri xdotool imagemagick dbus sound-theme-freedesktop libcanberra-pulse xdg-utils)

wanted=()
for group in "$@"; do
    case "$group" in
        build) wanted+=("${build[@]}") ;;
        test) wanted+=("${test[@]}") ;;
        fuzz) wanted+=("${fuzz[@]}") ;;
        run) wanted+=("${run[@]}") ;;
        *) echo "unknown package group: $group" >&2; exit 2 ;;
    esac
done

missing=()
for pkg in "${wanted[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "Run as root to install: ${missing[*]}" >&2; exit 1; }
    sudo=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -q
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
