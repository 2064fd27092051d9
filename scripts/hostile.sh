#!/bin/bash
# Builds a copy of the tree and runs its tests with unusual values of everything that they must not depend on: the
# folder's name, the user, fonts, locale, time zone, umask, the user's configuration, and the variables that Qt,
# GStreamer, GLib, FFmpeg and fontconfig read. Installs more fonts.
# usage: hostile.sh [CONFIGURATION [TEST-PATTERN]]
#   CONFIGURATION, TEST-PATTERN: as those of test.sh
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh fonts-noto-core
umask 077
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
tree="$folder/Ein Ordner für 字幕 & so"
home="$folder/home of nobody"
mkdir -p "$tree" "$folder/locales" "$folder/temporary" "$home/.config/fontconfig" "$home/.config/QtProject"

git ls-files -z | xargs -0 cp --parents -t "$tree"
localedef -i tr_TR -f UTF-8 "$folder/locales/tr_TR.UTF-8"

# Returns this font for every font that is requested.
cat >"$home/.config/fontconfig/fonts.conf" <<'XML'
<?xml version="1.0"?>
<fontconfig>
  <match target="pattern">
    <edit name="family" mode="assign" binding="strong"><string>Noto Serif</string></edit>
  </match>
</fontconfig>
XML
printf '[Rules]\n*=true\n' >"$home/.config/QtProject/qtlogging.ini"

as_nobody=
if [ "$(id -u)" = 0 ]; then
    # A user id that does not exist.
    chown -R 64321:64321 "$folder"
    as_nobody='setpriv --reuid 64321 --regid 64321 --clear-groups'
fi
# shellcheck disable=SC2086 # $as_nobody is several words
env HOME="$home" TMPDIR="$folder/temporary" \
    LOCPATH="$folder/locales" LC_ALL=tr_TR.UTF-8 LANG=tr_TR.UTF-8 LANGUAGE=tr TZ=Pacific/Chatham \
    DISPLAY=:4711 WAYLAND_DISPLAY=none XDG_RUNTIME_DIR=/nonexistent XDG_DATA_DIRS=/nonexistent USER=root LOGNAME=root \
    QT_QPA_PLATFORM=rubbish QT_PLUGIN_PATH=/nonexistent QT_SCALE_FACTOR=3 QT_FONT_DPI=200 QT_DEBUG_PLUGINS=1 \
    QT_LOGGING_RULES='*=true' QT_MESSAGE_PATTERN='%{time} %{message}' QT_FATAL_WARNINGS=1 QT_NO_FT_CACHE=1 \
    GST_DEBUG=5 GST_REGISTRY=/nonexistent/registry GST_PLUGIN_PATH=/nonexistent GST_PLUGIN_SYSTEM_PATH=/nonexistent \
    GST_VAAPI_ALL_DRIVERS=1 G_DEBUG=fatal-warnings G_MESSAGES_DEBUG=all \
    FC_DEBUG=1 FC_LANG=ja FREETYPE_PROPERTIES=truetype:interpreter-version=35 \
    FFREPORT=level=56 AV_LOG_FORCE_COLOR=1 PYTHONUTF8=0 PYTHONIOENCODING=ascii \
    $as_nobody "$tree/scripts/test.sh" "$@"
