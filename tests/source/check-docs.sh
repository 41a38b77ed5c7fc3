#!/bin/sh
# Fails if a comment refers to an entry that docs/compatibility.md does not have, or if that page names a test that
# does not exist. Argument: the source folder.
set -eu
cd "$1"
page=docs/compatibility.md
failed=0

for name in $(grep -rhoE 'compatibility\.md#[a-z0-9-]+' --include='*.h' --include='*.cpp' --include='*.md' . |
    sed 's/.*#//' | sort -u); do
    grep -qx "### $name" $page || { echo "$page has no entry $name" >&2; failed=1; }
done
for test in $(sed -n '/^\* Test:/,/^$/p' $page | grep -oE '[A-Z][A-Za-z0-9]+\.[A-Z][A-Za-z0-9]+' | sort -u); do
    grep -rqE "^TEST(_F|_P)?\(${test%.*}, ${test#*.}\)" --include='*.cpp' tests ||
        { echo "$page names the test $test, which does not exist" >&2; failed=1; }
done
exit $failed
