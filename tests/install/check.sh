#!/bin/bash
# Checks the result of `cmake --install`. Installs into a staging folder instead of the prefix, so that anything with
# the prefix compiled in fails.
# usage: check.sh CHECK
# Environment:
#   SOURCE, BUILD, STAGE  folders of the sources, of the build, and to install into
#   SOVERSION             the part after ".so." in the libraries' sonames
#   GSTREAMER, FREI0R     not empty if the GStreamer element and the frei0r plugin are built
#   FREI0RDIR             the plugin's folder, an absolute path
#   BINDIR, LIBDIR, INCLUDEDIR, DATADIR, DOCDIR, MANDIR
#                         folders of the installation, absolute paths
set -eu

fail() {
    echo "$*" >&2
    exit 1
}

# equal EXPECTED ACTUAL: compares two texts and fails with a diff
equal() {
    diff -u <(printf '%s\n' "$1") <(printf '%s\n' "$2") || fail "not as expected"
}

# The version in CMakeLists.txt.
version=$(sed -n 's/^project(libsubtitle VERSION \([0-9.]*\).*/\1/p' "$SOURCE/CMakeLists.txt")
export PKG_CONFIG_PATH=$STAGE/all$LIBDIR/pkgconfig
prefix=$STAGE/all$(dirname "$BINDIR")
work=$STAGE/work/$1
rm -rf "$work"
mkdir -p "$work"
components=(runtime development frames framesdevelopment subburn ${GSTREAMER:+gstreamer} ${FREI0R:+frei0r} documents)
text=Installed
printf '1\n00:00:01,000 --> 00:00:02,000\n%s\n\n' $text >"$work/text.srt"

check_stage() {
    rm -rf "$STAGE"
    DESTDIR=$STAGE/all cmake --install "$BUILD" >/dev/null
    local component
    for component in "${components[@]}"; do
        DESTDIR=$STAGE/$component cmake --install "$BUILD" --component "$component" >/dev/null
    done
}

texts_in() {
    find "$1" -type f '(' -name '*.md' -o -name '*.png' ')' -printf '%P\n' | sort
}

# files_of COMPONENT: the files installed, with the targets of links, except docs/
files_of() {
    (cd "$STAGE/$1" && find . ! -type d ! -path '*/docs/*' -printf '/%P %l\n' | sed 's/ $//' | LC_ALL=C sort)
}

check_files() {
    local suffix zsh=site-functions
    suffix=${SOVERSION#"${SOVERSION%%-*}"}
    [ ! -d "$STAGE/all$DATADIR/zsh/vendor-completions" ] || zsh=vendor-completions
    equal "$LIBDIR/libsubtitle.so.$SOVERSION libsubtitle.so.$version$suffix
$LIBDIR/libsubtitle.so.$version$suffix" "$(files_of runtime)"
    equal "$(LC_ALL=C sort <<END
$DOCDIR/README.md
$INCLUDEDIR/libsubtitle.h
$INCLUDEDIR/libsubtitle/psstream.h
$INCLUDEDIR/libsubtitle/subtitledecoder.h
$LIBDIR/cmake/subtitle/subtitleConfig.cmake
$LIBDIR/cmake/subtitle/subtitleConfigVersion.cmake
$LIBDIR/cmake/subtitle/subtitleTargets-$(sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$BUILD/CMakeCache.txt" |
        tr '[:upper:]' '[:lower:]').cmake
$LIBDIR/cmake/subtitle/subtitleTargets.cmake
$LIBDIR/libsubtitle.so libsubtitle.so.$SOVERSION
$LIBDIR/pkgconfig/libsubtitle.pc
END
    )" "$(files_of development)"
    equal "$LIBDIR/libsubtitleframe.so.$SOVERSION libsubtitleframe.so.$version$suffix
$LIBDIR/libsubtitleframe.so.$version$suffix" "$(files_of frames)"
    equal "$(LC_ALL=C sort <<END
$INCLUDEDIR/libsubtitleframe.h
$LIBDIR/cmake/subtitleframe/subtitleframeConfig.cmake
$LIBDIR/cmake/subtitleframe/subtitleframeConfigVersion.cmake
$LIBDIR/cmake/subtitleframe/subtitleframeTargets-$(sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$BUILD/CMakeCache.txt" |
        tr '[:upper:]' '[:lower:]').cmake
$LIBDIR/cmake/subtitleframe/subtitleframeTargets.cmake
$LIBDIR/libsubtitleframe.so libsubtitleframe.so.$SOVERSION
$LIBDIR/pkgconfig/libsubtitleframe.pc
END
    )" "$(files_of framesdevelopment)"
    equal "$(LC_ALL=C sort <<END
$BINDIR/subburn
$DATADIR/bash-completion/completions/subburn
$DATADIR/zsh/$zsh/_subburn
$MANDIR/man1/subburn.1
END
    )" "$(files_of subburn)"
    equal "$DOCDIR/CHANGELOG.md
$DOCDIR/LICENSE" "$(files_of documents)"
    [ -z "$GSTREAMER" ] || equal "$LIBDIR/gstreamer-1.0/libgstsubtitleburn.so" "$(files_of gstreamer)"
    [ -z "$FREI0R" ] || equal "$FREI0RDIR/subtitleburn.so" "$(files_of frei0r)"
    equal "$(for component in "${components[@]}"; do files_of "$component"; done | LC_ALL=C sort)" \
        "$(files_of all)"
    equal "$(texts_in "$SOURCE/docs")" "$(find "$STAGE/all$DOCDIR/docs" -type f -printf '%P\n' | sort)"
}

check_headers() {
    local header flags
    eval "flags=($(pkg-config --cflags libsubtitleframe))"
    for header in libsubtitle.h libsubtitleframe.h libsubtitle/subtitledecoder.h libsubtitle/psstream.h; do
        echo "#include <$header>" >"$work/header.c"
        cc -std=c99 -Wall -Wextra -Wpedantic -Werror -fsyntax-only "${flags[@]}" "$work/header.c"
        c++ -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only "${flags[@]}" -x c++ "$work/header.c"
    done
}

# burn_with_host OUTPUT: builds the host in C and has it write a frame with its subtitle
burn_with_host() {
    local flags
    eval "flags=($(pkg-config --cflags --libs libsubtitle libavutil))"
    cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$SOURCE/tests/install/pkgconfig/host.c" -o "$work/host" "${flags[@]}"
    LD_LIBRARY_PATH=$STAGE/all$LIBDIR "$work/host" "$work/text.srt" $text "$1"
}

check_pkg_config() {
    equal "$version" "$(pkg-config --modversion libsubtitle)"
    burn_with_host "$work/frame"
    LD_LIBRARY_PATH=$STAGE/all$LIBDIR ldd "$work/host" | grep -qF "$STAGE/all$LIBDIR/libsubtitle.so.$SOVERSION" ||
        fail "another library was taken"
}

check_find_package() {
    cmake -S "$SOURCE/tests/install/findpackage" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$work/build" >/dev/null
    "$work/build/host" "$work/text.srt" $text
    ldd "$work/build/host" | grep -qF "$STAGE/all$LIBDIR/libsubtitle.so.$SOVERSION" || fail "another library was taken"
    # A request for another major version is refused.
    sed 's/subtitle 1\.0/subtitle 2.0/' "$SOURCE/tests/install/findpackage/CMakeLists.txt" >"$work/CMakeLists.txt"
    ! cmake -S "$work" -B "$work/refused" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null 2>"$work/log" ||
        fail "version 2.0 was found"
    grep -qF 'requested version "2.0"' "$work/log"
}

# A host that asks only for libsubtitleframe and gets libsubtitle with it, through pkg-config and CMake.
check_frames() {
    local flags
    eval "flags=($(pkg-config --cflags --libs libsubtitleframe))"
    cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$SOURCE/tests/install/frames/host.c" -o "$work/host" "${flags[@]}"
    LD_LIBRARY_PATH=$STAGE/all$LIBDIR "$work/host" "$work/text.srt"
    LD_LIBRARY_PATH=$STAGE/all$LIBDIR ldd "$work/host" | grep -qF "$STAGE/all$LIBDIR/libsubtitleframe.so.$SOVERSION" ||
        fail "another library was taken"
    cmake -S "$SOURCE/tests/install/frames" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$work/build" >/dev/null
    "$work/build/host" "$work/text.srt"
}

# install_static COMPONENT...: installs the components and the static libraries below $work/stage; prints the prefix
install_static() {
    local component
    for component in static "$@"; do
        DESTDIR=$work/stage cmake --install "$BUILD" --component "$component" >/dev/null
    done
    echo "$work/stage$(dirname "$BINDIR")"
}

# is_static PROGRAM: that it contains the libraries and still uses Qt and FFmpeg
is_static() {
    local libraries
    libraries=$(ldd "$1")
    [[ $libraries != *libsubtitle* ]] || fail "a shared library was taken"
    [[ $libraries == *libQt?Core* && $libraries == *libavformat* ]] || fail "Qt or FFmpeg was not linked"
}

# Without the shared libraries, -lsubtitle means the static one.
check_static_pkg_config() {
    local flags
    install_static development framesdevelopment >/dev/null
    export PKG_CONFIG_PATH=$work/stage$LIBDIR/pkgconfig
    eval "flags=($(pkg-config --static --cflags --libs libsubtitle) $(pkg-config --libs libavutil))"
    cc -std=c99 "$SOURCE/tests/install/pkgconfig/host.c" -o "$work/host" "${flags[@]}"
    is_static "$work/host"
    "$work/host" "$work/text.srt" $text "$work/frame"
    eval "flags=($(pkg-config --static --cflags --libs libsubtitleframe))"
    cc -std=c99 "$SOURCE/tests/install/frames/host.c" -o "$work/frameshost" "${flags[@]}"
    is_static "$work/frameshost"
    "$work/frameshost" "$work/text.srt"
}

# Beside the shared libraries, which stay what a host gets that does not ask for the component.
check_static_find_package() {
    local host installed
    installed=$(install_static runtime development frames framesdevelopment)
    cmake -S "$SOURCE/tests/install/static" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$installed" >/dev/null
    cmake --build "$work/build" >/dev/null
    for host in host frameshost; do
        is_static "$work/build/$host"
    done
    "$work/build/host" "$work/text.srt" $text
    "$work/build/frameshost" "$work/text.srt"
    # An installation without the static libraries says that they are not there.
    ! cmake -S "$SOURCE/tests/install/static" -B "$work/refused" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
        >/dev/null 2>"$work/log" || fail "static libraries were found"
    grep -qF 'It was built without SUBTITLE_STATIC' "$work/log"
}

check_subburn() {
    local subburn=$STAGE/all$BINDIR/subburn
    equal "subburn $(pkg-config --modversion libsubtitle)" "$("$subburn" --version | head -n 1)"
    # It loads the library of its own installation and draws the same as a host.
    burn_with_host "$work/expected"
    ffmpeg -nostdin -v error -f lavfi -i color=0x646464:s=320x180:r=25:d=2,format=gbrp -c:v ffv1 "$work/plain.mkv"
    env -u LD_LIBRARY_PATH LD_DEBUG=files LD_DEBUG_OUTPUT="$work/loaded" \
        "$subburn" --subtitles "$work/text.srt" --exact --quiet --snapshot 1.5 "$work/plain.mkv" "$work/frame.png"
    grep -qF "calling init: $STAGE/all$LIBDIR/libsubtitle.so.$SOVERSION" "$work"/loaded.* || fail "another library was taken"
    ffmpeg -nostdin -v error -i "$work/frame.png" -f rawvideo -pix_fmt rgb24 "$work/frame"
    cmp "$work/expected" "$work/frame"
}

check_gstreamer() {
    burn_with_host "$work/expected"
    head -c $((320 * 180 * 3)) /dev/zero | tr '\0' '\144' >"$work/plain"
    export GST_REGISTRY=$work/registry GST_PLUGIN_PATH=$STAGE/all$LIBDIR/gstreamer-1.0
    cat "$work/plain" "$work/plain" |
        LD_LIBRARY_PATH=$STAGE/all$LIBDIR gst-launch-1.0 -q fdsrc ! rawvideoparse format=rgb width=320 height=180 \
            framerate=2/3 ! subtitleburn location="$work/text.srt" ! filesink location="$work/frames"
    cmp <(cat "$work/plain" "$work/expected") "$work/frames"
}

check_frei0r() {
    local film=(ffmpeg -nostdin -v error -f lavfi -i "color=0x646464:s=320x180:r=2/3,format=rgba" -frames:v 2)
    burn_with_host "$work/expected"
    "${film[@]}" -f rawvideo -pix_fmt rgb24 "$work/plain"
    local milliseconds=y
    [ "$(ffmpeg -version | sed -n 's/^libavfilter *\([0-9]*\)\..*/\1/p')" -lt 12 ] || milliseconds=n
    FREI0R_PATH=$STAGE/all$FREI0RDIR LD_LIBRARY_PATH=$STAGE/all$LIBDIR "${film[@]}" \
        -vf "frei0r=filter_name=subtitleburn:filter_params=$work/text.srt|$milliseconds" -f rawvideo -pix_fmt rgb24 "$work/frames"
    cmp <(cat <(head -c $((320 * 180 * 3)) "$work/plain") "$work/expected") "$work/frames"
}

# The newest entry of debian/changelog has the version, and the number of the packaging behind it.
check_debian_version() {
    equal "$version" "$(sed -n '1s/^libsubtitle (\(.*\)-[0-9]*) .*/\1/p' "$SOURCE/debian/changelog")"
}

# flags_of OPTION...: the flags from pkg-config for a build configured so, with its .pc file moved to another prefix
flags_of() {
    rm -rf "$work/other"
    cmake -S "$SOURCE" -B "$work/other" -G Ninja -DSUBTITLE_TESTS=OFF -DSUBTITLE_BENCH=OFF "$@" >/dev/null
    local dir
    dir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$work/other/CMakeCache.txt")
    dir=$work/moved/$dir/pkgconfig
    mkdir -p "$dir"
    cp "$work/other/libsubtitle.pc" "$dir"
    local flags flag
    eval "flags=($(PKG_CONFIG_PATH=$dir pkg-config --cflags --libs libsubtitle))"
    for flag in "${flags[@]}"; do
        case $flag in
        -[IL]*) flag=${flag:0:2}$(realpath -m "${flag:2}") ;;
        esac
        echo "${flag/"$work/moved"/MOVED}"
    done | xargs
}

# Folders relative to the prefix move with the .pc file; absolute ones stay.
check_folders() {
    equal "-IMOVED/include -LMOVED/lib/$(cc -print-multiarch) -lsubtitle" "$(flags_of -DCMAKE_INSTALL_PREFIX=/usr)"
    equal "-I/elsewhere/include -LMOVED/lib64 -lsubtitle" "$(flags_of -DCMAKE_INSTALL_PREFIX=/opt/subtitle \
        -DCMAKE_INSTALL_LIBDIR=lib64 -DCMAKE_INSTALL_INCLUDEDIR=/elsewhere/include)"
    equal "-I/opt/subtitle/include -L/elsewhere/lib -lsubtitle" "$(flags_of -DCMAKE_INSTALL_PREFIX=/opt/subtitle \
        -DCMAKE_INSTALL_LIBDIR=/elsewhere/lib)"
}

"check_$1"
