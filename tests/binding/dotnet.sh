#!/bin/sh
# The managed binding on the .NET SDK, against the libraries of a build.
#   dotnet.sh test NATIVE SCRATCH     its own tests
#   dotnet.sh package NATIVE SCRATCH  packs it, and has a new program take the package and print a spectrum
# NATIVE is the folder of the native libraries, SCRATCH a folder for what is made. NuGet packages come from the sources
# that the machine is configured with, or from those in QORN_NUGET_SOURCES, separated by blanks. Ends with 77 where there
# is no SDK that could do it, or no source of packages.
set -eu
mode=$1
native=$2
scratch=$3
needed=10
here=$(cd "$(dirname "$0")" && pwd)
projects=$here/../../binding/dotnet

found=$(dotnet --version 2>/dev/null || true)
case "${found%%.*}" in
  "" | *[!0-9]*) echo "skipped: the .NET SDK is not here (version $needed or later)"; exit 77 ;;
esac
if [ "${found%%.*}" -lt $needed ]; then
  echo "skipped: the .NET SDK here is $found, and version $needed or later is needed"
  exit 77
fi
export DOTNET_CLI_TELEMETRY_OPTOUT=1 DOTNET_NOLOGO=1 DOTNET_CLI_UI_LANGUAGE=en MSBUILDDISABLENODEREUSE=1
mkdir -p "$scratch"

# run LOG COMMAND... - shows what the command printed only if it fails.
run() {
  log=$scratch/$1.log
  shift
  "$@" >"$log" 2>&1 || { cat "$log"; return 1; }
}

# restore LOG PROJECT ARGUMENTS... - fetches the packages that a project needs. Sources that cannot be reached or lack
# them (NU1301, NU1101, NU1102) end the script as skipped, unless they have been named; all else is a failure.
restore() {
  log=$1
  shift
  run "$log" dotnet restore -m:1 "$@" && return
  [ -z "${QORN_NUGET_SOURCES:-}" ] && grep -qE 'NU1301|NU1101|NU1102' "$scratch/$log.log" || exit 1
  echo "skipped: the packages of $1 cannot be fetched, see above; name the sources that have them in QORN_NUGET_SOURCES"
  exit 77
}

sources=""
for source in ${QORN_NUGET_SOURCES:-}; do sources="$sources --source $source"; done

# MSBuild takes these for properties of the projects.
ArtifactsPath=$scratch/artifacts
QornNativeDirectory=$native
UseSharedCompilation=false
export ArtifactsPath QornNativeDirectory UseSharedCompilation

case "$mode" in
  test)
    tests=$projects/QORNWrapper.Tests/QORNWrapper.Tests.csproj
    # shellcheck disable=SC2086
    restore restore "$tests" $sources
    run test dotnet test "$tests" --no-restore -c Release -m:1
    grep -E '^(Passed|Failed)!' "$scratch/test.log"
    ;;
  package)
    rm -rf "$scratch/packages" "$scratch/program" "$scratch/cache"
    for project in MVPlatformShared QORNWrapper; do
      # shellcheck disable=SC2086
      restore "restore-$project" "$projects/$project/$project.csproj" $sources
      run "pack-$project" dotnet pack "$projects/$project/$project.csproj" --no-restore -c Release -m:1 \
        -o "$scratch/packages"
    done
    # The program knows the packages alone: their folder is its one source, and its cache is its own.
    unset ArtifactsPath
    QornVersion=$(sed -n 's/.*VERSION_STRING "\(.*\)".*/\1/p' "$here/../../include/qorn/Version.h")
    NUGET_PACKAGES=$scratch/cache
    export QornVersion NUGET_PACKAGES
    mkdir -p "$scratch/program"
    cp "$here/program/"* "$scratch/program"
    run restore-program dotnet restore -m:1 "$scratch/program/Program.csproj" --source "$scratch/packages"
    run build-program dotnet build "$scratch/program/Program.csproj" --no-restore -c Release -m:1 \
      -o "$scratch/program/out"
    dotnet "$scratch/program/out/Program.dll" >"$scratch/spectrum.txt"
    diff "$here/program/expected.txt" "$scratch/spectrum.txt"
    echo "The program printed the spectrum that it should."
    ;;
esac
