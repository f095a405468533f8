# Completions of vqmctl. Written by Scripts/make-completions: change that, or the command line.

_vqmctl_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

# The files that do not match, and all folders.
_vqmctl_files() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -X "$1" -- "$current"; compgen -d -- "$current")
}

_vqmctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command= i
    COMPREPLY=()
    # bash splits --option=value at the sign.
    if [ "$current" = = ]; then
        current=
    elif [ "$previous" = = ]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
        --color|--constants|--hold|--ignore|--media|--on|--output|--root|--schedule|--times|--wait|-o) ((++i)); continue ;;
        esac
        case "${command:+$command }${COMP_WORDS[i]}" in
        'help'|'setting'|'setting get'|'setting on'|'setting off'|'setting watch'|'remote'|'remote keys'|'remote press'|'keys'|'keys watch'|'schedule'|'schedule show'|'schedule at'|'schedule timeline'|'schedule lint'|'schedule group'|'schedule sizes'|'status'|'check'|'constants'|'constants get'|'constants list'|'constants init'|'explain') command="${command:+$command }${COMP_WORDS[i]}" ;;
        esac
    done
    case "$command $previous" in
    ' --color') _vqmctl_words "auto always never"; return ;;
    'remote press --times') :; return ;;
    'remote press --hold') :; return ;;
    'remote press --wait') :; return ;;
    'schedule show --root') _vqmctl_files '*'; return ;;
    'schedule show --constants') _vqmctl_files '!*.xml'; return ;;
    'schedule at --root') _vqmctl_files '*'; return ;;
    'schedule at --constants') _vqmctl_files '!*.xml'; return ;;
    'schedule timeline --root') _vqmctl_files '*'; return ;;
    'schedule timeline --constants') _vqmctl_files '!*.xml'; return ;;
    'schedule timeline --on') :; return ;;
    'schedule timeline -o'|'schedule timeline --output') _vqmctl_files '!*.xml'; return ;;
    'schedule lint --root') _vqmctl_files '*'; return ;;
    'schedule lint --constants') _vqmctl_files '!*.xml'; return ;;
    'schedule lint --ignore') _vqmctl_words "not-well-formed unreadable-encoding encoding-declared-wrongly text-after-nul too-large doctype state-missing state-not-first state-not-ok no-schedule no-items unknown-element misspelt-element misplaced-element repeated-element unknown-attribute misspelt-attribute missing-attribute attribute-beyond-slots schedule-in-schedule item-outside-schedule item-in-item child-outside-item missing-child repeated-child element-in-text format-before-name stray-text time-malformed time-without-seconds time-not-digits time-out-of-range time-after-midnight hour-24 time-style start-not-before-end overlapping-periods date-not-year-month-day impossible-date date-style expired number-not-digits number-wraps negative-number size-in-pieces size-zero item-count-mismatch total-size-mismatch empty-name empty-format white-space-in-name blank-in-name mixed-normalization path-separator-in-name dot-in-format extension-twice duplicate-id duplicate-order duplicate-file not-an-address empty-address not-a-subnet-mask gateway-outside-subnet master-not-own-address is-master-value"; return ;;
    'schedule lint --on') :; return ;;
    'schedule sizes --root') _vqmctl_files '*'; return ;;
    'schedule sizes --constants') _vqmctl_files '!*.xml'; return ;;
    'schedule sizes --media') _vqmctl_files '*'; return ;;
    'status --root') _vqmctl_files '*'; return ;;
    'status --constants') _vqmctl_files '!*.xml'; return ;;
    'status --schedule') _vqmctl_files '!*.xml'; return ;;
    'status --media') _vqmctl_files '*'; return ;;
    'check --root') _vqmctl_files '*'; return ;;
    'check --constants') _vqmctl_files '!*.xml'; return ;;
    'check --schedule') _vqmctl_files '!*.xml'; return ;;
    'check --media') _vqmctl_files '*'; return ;;
    'constants get --root') _vqmctl_files '*'; return ;;
    'constants get --constants') _vqmctl_files '!*.xml'; return ;;
    'constants list --root') _vqmctl_files '*'; return ;;
    'constants list --constants') _vqmctl_files '!*.xml'; return ;;
    'constants init --root') _vqmctl_files '*'; return ;;
    'constants init --constants') _vqmctl_files '!*.xml'; return ;;
    esac
    if [[ $current == -* ]]; then
        case $command in
        '') _vqmctl_words "-h --help -v --verbose --color --version" ;;
        'help') _vqmctl_words "-h --help -v --verbose --color" ;;
        'setting') _vqmctl_words "-h --help -v --verbose --color" ;;
        'setting get') _vqmctl_words "-h --help -v --verbose --color" ;;
        'setting on') _vqmctl_words "-h --help -v --verbose --color" ;;
        'setting off') _vqmctl_words "-h --help -v --verbose --color" ;;
        'setting watch') _vqmctl_words "-h --help -v --verbose --color" ;;
        'remote') _vqmctl_words "-h --help -v --verbose --color" ;;
        'remote keys') _vqmctl_words "-h --help -v --verbose --color --keyboard" ;;
        'remote press') _vqmctl_words "-h --help -v --verbose --color --times --hold --wait --anyway" ;;
        'keys') _vqmctl_words "-h --help -v --verbose --color" ;;
        'keys watch') _vqmctl_words "-h --help -v --verbose --color --json" ;;
        'schedule') _vqmctl_words "-h --help -v --verbose --color" ;;
        'schedule show') _vqmctl_words "-h --help -v --verbose --color --root --constants --json" ;;
        'schedule at') _vqmctl_words "-h --help -v --verbose --color --root --constants --json" ;;
        'schedule timeline') _vqmctl_words "-h --help -v --verbose --color --root --constants --on -o --output --json" ;;
        'schedule lint') _vqmctl_words "-h --help -v --verbose --color --root --constants --json --oneline --strict --ignore --sarif --fix --write --on" ;;
        'schedule group') _vqmctl_words "-h --help -v --verbose --color --json" ;;
        'schedule sizes') _vqmctl_words "-h --help -v --verbose --color --root --constants --media --write --json" ;;
        'status') _vqmctl_words "-h --help -v --verbose --color --root --constants --schedule --media --json --quiet" ;;
        'check') _vqmctl_words "-h --help -v --verbose --color --root --constants --schedule --media --json --watch" ;;
        'constants') _vqmctl_words "-h --help -v --verbose --color" ;;
        'constants get') _vqmctl_words "-h --help -v --verbose --color --root --constants --json" ;;
        'constants list') _vqmctl_words "-h --help -v --verbose --color --root --constants --json" ;;
        'constants init') _vqmctl_words "-h --help -v --verbose --color --root --constants" ;;
        'explain') _vqmctl_words "-h --help -v --verbose --color" ;;
        esac
        return
    fi
    case $command in
    '') _vqmctl_words "help setting remote keys schedule status check constants explain" ;;
    'help') : ;;
    'setting') _vqmctl_words "get on off watch" ;;
    'setting get') : ;;
    'setting on') : ;;
    'setting off') : ;;
    'setting watch') : ;;
    'remote') _vqmctl_words "keys press" ;;
    'remote keys') : ;;
    'remote press') _vqmctl_words "XF86SimpleMenu XF86More XF86MenuKB XF86TopMenu XF86MediaTopMenu XF86RootMenu XF86ContextMenu XF86HomePage XF86Red XF86Green XF86PowerOff XF86Yellow XF86Blue XF86Info XF86ChannelUp XF86ChannelDown XF8610ChannelsUp XF86Close XF8610ChannelsDown XF86AudioMute XF86Unmute XF86Select XF86Option XF86Subtitle XF86AudioPlay XF86AudioStop Up Down Left Right Return XF86Back XF86AudioPrev XF86AudioNext XF86Mail XF86Start XF86Search XF86AudioRecord XF86Calendar XF86RockerUp XF86RockerDown XF86RockerEnter XF86Forward XF86Stop XF86Refresh XF86Eject XF86WWW XF86Favorites XF86AudioPause XF86AudioMedia XF86MyComputer XF86VendorHome XF86Shop XF86History XF86OpenURL XF86AddFavorite XF86HotLinks XF86Community XF86AudioRewind XF86BackForward XF86Launch0 XF86Launch1 XF86Launch2 XF86Launch3 XF86Launch4 XF86Launch5 XF86Launch6 XF86Launch7 XF86Launch8 XF86Launch9 XF86LaunchA XF86LaunchB XF86LaunchC XF86LaunchD XF86LaunchE XF86AudioRaiseVolume XF86AudioLowerVolume XF86LaunchF XF86ApplicationLeft XF86ApplicationRight XF86Book XF86CD XF86Clear XF86Display XF86Game XF86Go XF86Market XF86Meeting XF86MySites XF86News XF86OfficeHome XF86Phone XF86Reload XF86ScrollUp XF86ScrollDown XF86ScrollClick XF86Support XF86TaskPane XF86Tools XF86Travel XF86Video XF86ZoomIn XF86ZoomOut XF86Messenger XF86WebCam XF86Pictures XF86Music XF86AudioForward XF86AudioRepeat XF86AudioRandomPlay XF86AudioCycleTrack XF86CycleAngle XF86FrameBack XF86FrameForward XF86Time XF86View XF86AudioPreset XF86FullScreen XF86AspectRatio XF86DVD XF86Audio XF86Break XF86VideoPhone XF86ZoomReset XF86Voicemail XF86DisplayToggle XF86MediaRepeat XF86Images XF86NotificationCenter XF86PickupPhone XF86HangupPhone XF86CameraFocus XF86CameraZoomIn XF86CameraZoomOut XF86CameraUp XF86CameraDown XF86CameraLeft XF86CameraRight XF86ControlPanel XF86AppSelect XF86VoiceCommand XF86Assistant XF86RightUp XF86RightDown XF86LeftUp XF86LeftDown XF86AudioDesc XF863DMode XF86NextFavorite XF86StopRecord XF86PauseRecord XF86VOD XF86FastReverse XF86SlowReverse XF86Data XF86Macro1 XF86Macro2 XF86Macro3 XF86Macro4 XF86Macro5 XF86Macro6 XF86Macro7 XF86Macro8 XF86Macro9 XF86Macro10 XF86Macro11 XF86Macro12 XF86Macro13 XF86Macro14 XF86Macro15 XF86Macro16 XF86Macro17 XF86Macro18 XF86Macro19 XF86Macro20 XF86Macro21 XF86Macro22 XF86Macro23 XF86Macro24 XF86Macro25 XF86Macro26 XF86Macro27 XF86Macro28 XF86Macro29 XF86Macro30 XF86MacroPreset1 XF86MacroPreset2 XF86MacroPreset3 XF86MacroRecordStart XF86MacroRecordStop XF86MacroPresetCycle XF86KbdInputAssistPrev XF86KbdInputAssistNext" ;;
    'keys') _vqmctl_words "watch" ;;
    'keys watch') : ;;
    'schedule') _vqmctl_words "show at timeline lint group sizes" ;;
    'schedule show') _vqmctl_files '!*.xml' ;;
    'schedule at') _vqmctl_files '!*.xml' ;;
    'schedule timeline') _vqmctl_files '!*.xml' ;;
    'schedule lint') _vqmctl_files '!*.xml' ;;
    'schedule group') _vqmctl_files '!*.xml' ;;
    'schedule sizes') _vqmctl_files '!*.xml' ;;
    'status') : ;;
    'check') : ;;
    'constants') _vqmctl_words "get list init" ;;
    'constants get') : ;;
    'constants list') : ;;
    'constants init') : ;;
    'explain') _vqmctl_words "not-well-formed unreadable-encoding encoding-declared-wrongly text-after-nul too-large doctype state-missing state-not-first state-not-ok no-schedule no-items unknown-element misspelt-element misplaced-element repeated-element unknown-attribute misspelt-attribute missing-attribute attribute-beyond-slots schedule-in-schedule item-outside-schedule item-in-item child-outside-item missing-child repeated-child element-in-text format-before-name stray-text time-malformed time-without-seconds time-not-digits time-out-of-range time-after-midnight hour-24 time-style start-not-before-end overlapping-periods date-not-year-month-day impossible-date date-style expired number-not-digits number-wraps negative-number size-in-pieces size-zero item-count-mismatch total-size-mismatch empty-name empty-format white-space-in-name blank-in-name mixed-normalization path-separator-in-name dot-in-format extension-twice duplicate-id duplicate-order duplicate-file not-an-address empty-address not-a-subnet-mask gateway-outside-subnet master-not-own-address is-master-value constants-missing constants-unreadable constants-not-well-formed no-schedule-file schedule-file-empty schedule-missing schedule-unreadable schedule-not-well-formed media-directory-missing media-directory-closed only-for-root file-missing file-size file-not-examined file-of-another-kind file-unreadable size-0 disk-full expiration-no-day item-count total-size no-files not-a-schedule not-checked changed-meanwhile" ;;
    esac
}

complete -F _vqmctl vqmctl
