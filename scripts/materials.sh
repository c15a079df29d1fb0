# Sourced by scripts/release: what each file of a release is made of, in the format SPDX 2.3. A line of a list of
# materials has the fields: file of the release, relation to it, name, version, licence, where its source is, home
# page, package URL.
# shellcheck shell=bash

# Licences of what is linked in, by the name of Debian's source package; of all else Debian's copyright file has them.
licenceOf() { # source package
    case "$1" in
        cli11) say BSD-3-Clause ;;
        nlohmann-json*) say MIT ;;
        gcc-[0-9]* | gcc-mingw-w64) say "GPL-3.0-or-later WITH GCC-exception-3.1" ;;
        glibc | cross-toolchain-base) say LGPL-2.1-or-later ;;
        qt6-base) say "LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only" ;;
        mingw-w64) say "ZPL-2.1 AND MIT AND LicenseRef-public-domain" ;;
        nsis) say "Zlib" ;;
        *) say NOASSERTION ;;
    esac
}

# One line for each of the installed packages that match the patterns; the command gives the package database.
listInstalled() { # command of the database, file of the release, relation, patterns of packages...
    local database="$1" file="$2" relation="$3" state name installed source sourceVersion architecture page
    shift 3
    # shellcheck disable=SC2016 # the database expands it
    "$database" --show --showformat='${db:Status-Abbrev}|${Package}|${Version}|${source:Package}'\
'|${source:Version}|${Architecture}|${Homepage}\n' "$@" |
        while IFS='|' read -r state name installed source sourceVersion architecture page; do
            [[ $state == ii* ]] || continue
            printf '%s\t' "$file" "$relation" "$name" "$installed" "$(licenceOf "$source")" \
                "https://snapshot.debian.org/package/$source/$sourceVersion/" "$page"
            printf '%s\n' "pkg:deb/debian/$name@${installed//+/%2B}?arch=$architecture"
        done | sort -u
}

rootDatabase() {
    inRoot dpkg-query "$@"
}

# In a fresh root, for the packages of one architecture: what the compiler took in (headers, templates, start-up code),
# what the programs load, and what built them.
listMaterials() { # architecture, packages...
    local architecture="$1" package name linked needed cross=""
    shift
    [[ $architecture == amd64 ]] || cross="-$architecture-cross"
    for package in "$@"; do
        name="${package##*/}"
        linked=("libstdc++-*-dev$cross" "libgcc-*-dev$cross" "libc6-dev$cross")
        case "$name" in
            tarnbeacon-cli_*) linked+=(libcli11-dev nlohmann-json3-dev) ;;
            *) linked+=("qt6-base-dev:$architecture") ;;
        esac
        readarray -t needed < <(inRoot dpkg-deb --field "$package" Depends | tr ',' '\n' |
            grep -oE '^ ?lib[^ ]*' | tr -d ' ')
        listInstalled rootDatabase "$name" STATIC_LINK "${linked[@]}"
        listInstalled rootDatabase "$name" DYNAMIC_LINK "${needed[@]/%/:$architecture}"
        listInstalled rootDatabase "$name" BUILD_TOOL_OF cmake ninja-build dpkg-dev cmark-gfm xz-utils 'g++-[0-9]*' \
            ${cross:+crossbuild-essential-arm64}
    done
}

# What Qt for Windows holds itself, in the words of its source: without what other systems need, what is switched off in
# scripts/toolkit.sh, and modules that are not linked.
listPartsOfQt() { # folder of the source, its version, file of the release
    local folder="$1" file
    (cd "$folder" && find . -name qt_attribution.json -printf '%P\n' | sort) |
        grep -vE '^(cmake|util|tests|examples)/|^src/(testlib|network|dbus|plugins)/|^src/gui/(opengl|vulkan)/' |
        grep -vE '/(android|gradle|wasm|xcb|libjpeg|md4c|VulkanMemoryAllocator|forkfd|libpsl|pixman|corelib/kernel)/' |
        while read -r file; do
            tr '\n\t' '  ' <"$folder/$file" # there are line breaks within strings
        done | jq --raw-output --arg file "$3" \
            --arg source "https://snapshot.debian.org/package/qt6-base/$2/" '(arrays[], objects) |
            [$file, "CONTAINS", .Name, (.Version // "" | gsub("[ ,].*"; "")), (.LicenseId // "LicenseRef-public-domain" |
            gsub(" or "; " OR ") | gsub("ICC License"; "LicenseRef-ICC")), $source, (.Homepage // ""), ""] | join("\t")'
}

# On this computer. The source of Qt is fetched again for the parts of it.
listWindowsMaterials() { # folder for the source of Qt
    local file qt
    qt="$(dpkg-query --show --showformat '${source:Version}' qt6-base-dev)"
    [[ -d $1/source ]] || fetchSource "$qt" "$1"
    for file in "TarnBeacon-$version-setup.exe" "tarnbeacon-cli-$version-windows.zip"; do
        listInstalled dpkg-query "$file" STATIC_LINK libcli11-dev nlohmann-json3-dev g++-mingw-w64-x86-64-posix \
            gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev
        listInstalled dpkg-query "$file" BUILD_TOOL_OF cmake ninja-build gcc-mingw-w64-x86-64-posix \
            binutils-mingw-w64-x86-64 cmark-gfm imagemagick
    done
    file="TarnBeacon-$version-setup.exe"
    listInstalled dpkg-query "$file" STATIC_LINK qt6-base-dev |
        sed "s/\tqt6-base-dev\t/\tqt6-base\t/; s/qt6-base-dev@.*/qt6-base@${qt//+/%2B}?arch=source/"
    listPartsOfQt "$1/source" "$qt" "$file"
    listInstalled dpkg-query "$file" CONTAINS nsis-common
}

# Prints the bill of materials of the files in a folder, from the lists in another one.
makeMaterials() { # folder of the files, folder of the lists
    local file
    {
        for file in "$1"/*; do
            printf 'file\t%s\t%s\n' "${file##*/}" "$(sha256sum "$file" | head -c 64)"
        done
        LC_ALL=C sort -u "$2"/*.materials
    } | jq --null-input --raw-input --arg version "$version" --arg commit "$(git rev-parse HEAD)" \
        --arg created "$(date --utc --date "@$(releaseTime)" +%FT%TZ)" \
        '[inputs / "\t"] as $lines
        | [$lines[] | select(.[0] == "file")] as $files
        | [$lines[] | select(.[0] != "file")] as $materials
        | def id: "SPDXRef-" + gsub("[^A-Za-z0-9.-]"; "-");
        def entry: { filesAnalyzed: false, licenseConcluded: "NOASSERTION", copyrightText: "NOASSERTION" };
        { spdxVersion: "SPDX-2.3", dataLicense: "CC0-1.0", SPDXID: "SPDXRef-DOCUMENT", name: "TarnBeacon-\($version)",
          documentNamespace: "https://tarnbeacon.example/spdx/\($version)-\($commit)",
          creationInfo: { created: $created, creators: ["Tool: scripts/release"] },
          hasExtractedLicensingInfos: [
            { licenseId: "LicenseRef-public-domain", extractedText: "Public domain." },
            { licenseId: "LicenseRef-ICC", extractedText: "src/3rdparty/icc/LICENSE.txt in the source of Qt." }],
          packages: (
            [$files[] | entry + { SPDXID: (.[1] | id), name: .[1], versionInfo: $version, packageFileName: .[1],
              downloadLocation: "NOASSERTION", licenseDeclared: "GPL-3.0-or-later",
              checksums: [{ algorithm: "SHA256", checksumValue: .[2] }] }]
            + ([$materials[] | entry + { SPDXID: (.[2] + "-" + .[3] | id), name: .[2],
              downloadLocation: .[5], licenseDeclared: .[4] }
              + (if .[3] == "" then {} else { versionInfo: .[3] } end)
              + (if .[6] == "" then {} else { homepage: .[6] } end)
              + (if .[7] == "" then {} else { externalRefs: [{ referenceCategory: "PACKAGE-MANAGER",
                  referenceType: "purl", referenceLocator: .[7] }] } end)] | unique_by(.SPDXID))),
          relationships: (
            [$files[] | { spdxElementId: "SPDXRef-DOCUMENT", relationshipType: "DESCRIBES",
              relatedSpdxElement: (.[1] | id) }]
            + ([$materials[] | (.[0] | id) as $file | (.[2] + "-" + .[3] | id) as $material
              | if .[1] == "BUILD_TOOL_OF"
                then { spdxElementId: $material, relationshipType: .[1], relatedSpdxElement: $file }
                else { spdxElementId: $file, relationshipType: .[1], relatedSpdxElement: $material } end])) }'
}
