#!/bin/sh
# Brings the catalogues in translations/ up to date with the operator texts of the sources:
# new texts are added unfinished, texts gone from the sources are dropped. Run it after
# changing texts, then translate in Qt Linguist (linguist translations/<file>.ts); the build
# compiles the .ts files into build/translations.
#
#   scripts/update-translations.sh [LANGUAGE...]     (default: every language present)
set -eu
cd "$(dirname "$0")/.."
LUPDATE=${LUPDATE:-lupdate}

languages="$*"
if [ -z "$languages" ]; then
    languages=$(ls translations/*_*.ts 2>/dev/null | sed 's/.*_\([^_]*\)\.ts$/\1/' | sort -u)
fi
[ -n "$languages" ] || { echo "no language given and none in translations/" >&2; exit 1; }

for language in $languages; do
    # The catalogue of each target and the folders its texts come from.
    "$LUPDATE" -no-obsolete -locations relative app -ts "translations/zrstudio_$language.ts"
    "$LUPDATE" -no-obsolete -locations relative host/core host/gui -ts "translations/zrhost_$language.ts"
    "$LUPDATE" -no-obsolete -locations relative src -ts "translations/userctl_$language.ts"
    # The server's reasons, notices and mail delivery errors, all in the context "ZRServer"
    # (QT_TRANSLATE_NOOP), and the titles of the roles ("RoleCatalogue").
    "$LUPDATE" -no-obsolete -locations relative server/engine/ops server/engine/session \
        server/engine/mail server/engine/storage/rolecatalogue.cpp \
        -ts "translations/zrserver_$language.ts"
done
