#!/bin/sh
# The sandbox and the content check in it, as the README shows them.
#   SandboxTest.sh SANDBOX CONTENT_CHECK
set -eu
sandbox=$1
check=$2

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

expect() { # NAME RESULT OUTPUT COMMAND...
    name=$1 result=$2 output=$3
    shift 3
    given=$("$@") && code=0 || code=$?
    [ "$code" -eq "$result" ] || fail "$name: result $code, not $result"
    [ "$given" = "$output" ] || fail "$name: it printed '$given'"
}

yes_yes='schedule: yes
contents: yes'
yes_no='schedule: yes
contents: no'
no_no='schedule: no
contents: no'
export DLOG_LEVEL=silent

before=$(ls -lR /opt 2>&1 || true)
expect 'the sample is complete' 0 "$yes_yes" "$sandbox" "$check"
expect 'a missing file is noticed' 1 "$yes_no" "$sandbox" sh -c "rm /opt/data/demo_movie/evening.mp4; '$check'"
expect 'a file of another size is noticed' 1 "$yes_no" \
    "$sandbox" sh -c "truncate -s 1 /opt/data/demo_movie/logo.jpg; '$check'"
expect 'an empty sandbox has nothing' 1 "$no_no" "$sandbox" --empty "$check"
expect 'the result is the command'\''s' 7 '' "$sandbox" sh -c 'exit 7'
expect 'one sandbox opens in another' 0 "$yes_yes" "$sandbox" "$sandbox" "$check"
if unshare -Urm true 2>/dev/null; then # some machines let only root do this
    expect 'without root it is the same' 0 "$yes_yes" unshare -Urm "$sandbox" "$check"
fi
[ "$(ls -lR /opt 2>&1 || true)" = "$before" ] || fail "the machine's /opt has changed"
