# Completions of vqmctl. Written by Scripts/make-completions: change that, or the command line.

# Whether the words before the cursor name this command and none below it.
function __vqmctl_at
    set -l command
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
        else if contains -- $word --at --constants --file --format --hold --ignore --times --wait
            set skip 1
        else if contains -- (string join ' ' $command $word) 'setting' 'setting get' 'setting on' 'setting off' 'setting watch' 'remote' 'remote keys' 'remote press' 'schedule' 'schedule show' 'schedule at' 'schedule lint' 'status' 'check' 'constants' 'constants get' 'constants list'
            set -a command $word
        end
    end
    test "$command" = "$argv"
end

complete -c vqmctl -f
complete -c vqmctl -n "__vqmctl_at" -a setting -d 'Read, switch and watch the sync-demo setting'
complete -c vqmctl -n "__vqmctl_at" -a remote -d 'A remote control for people without one'
complete -c vqmctl -n "__vqmctl_at" -a schedule -d 'Look into schedule documents'
complete -c vqmctl -n "__vqmctl_at" -a status -d 'Why does this TV launch or play nothing? All on one screen'
complete -c vqmctl -n "__vqmctl_at" -a check -d 'Is all there that this TV is to play? If not, why?'
complete -c vqmctl -n "__vqmctl_at" -a constants -d 'Read a constants file as the TV does'
complete -c vqmctl -n "__vqmctl_at" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at" -l version -d 'Print the version and exit'
complete -c vqmctl -s v -l verbose -d 'Show the library\'s log on stderr'
complete -c vqmctl -n "__vqmctl_at setting" -a get -d 'Print "on" or "off"'
complete -c vqmctl -n "__vqmctl_at setting" -a on -d 'Switch the sync demo on and check that it is stored'
complete -c vqmctl -n "__vqmctl_at setting" -a off -d 'Switch the sync demo off and check that it is stored'
complete -c vqmctl -n "__vqmctl_at setting" -a watch -d 'Print the state now and after each change, until Ctrl-C'
complete -c vqmctl -n "__vqmctl_at setting" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at setting get" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at setting on" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at setting off" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at setting watch" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at remote" -a keys -d 'List the keys that the application holds'
complete -c vqmctl -n "__vqmctl_at remote" -a press -d 'Press and release a key that the application holds'
complete -c vqmctl -n "__vqmctl_at remote" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at remote keys" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at remote keys" -l keyboard -d 'Only those that the keyboard has, without what \'remote press\' has added'
complete -c vqmctl -n "__vqmctl_at remote press" -a 'XF86SimpleMenu XF86More XF86MenuKB XF86TopMenu XF86MediaTopMenu XF86RootMenu XF86ContextMenu XF86HomePage XF86Red XF86Green XF86PowerOff XF86Yellow XF86Blue XF86Info XF86ChannelUp XF86ChannelDown XF8610ChannelsUp XF86Close XF8610ChannelsDown XF86AudioMute XF86Unmute XF86Select XF86Option XF86Subtitle XF86AudioPlay XF86AudioStop Up Down Left Right Return XF86Back XF86AudioPrev XF86AudioNext XF86Mail XF86Start XF86Search XF86AudioRecord XF86Calendar XF86RockerUp XF86RockerDown XF86RockerEnter XF86Forward XF86Stop XF86Refresh XF86Eject XF86WWW XF86Favorites XF86AudioPause XF86AudioMedia XF86MyComputer XF86VendorHome XF86Shop XF86History XF86OpenURL XF86AddFavorite XF86HotLinks XF86Community XF86AudioRewind XF86BackForward XF86Launch0 XF86Launch1 XF86Launch2 XF86Launch3 XF86Launch4 XF86Launch5 XF86Launch6 XF86Launch7 XF86Launch8 XF86Launch9 XF86LaunchA XF86LaunchB XF86LaunchC XF86LaunchD XF86LaunchE XF86AudioRaiseVolume XF86AudioLowerVolume XF86LaunchF XF86ApplicationLeft XF86ApplicationRight XF86Book XF86CD XF86Clear XF86Display XF86Game XF86Go XF86Market XF86Meeting XF86MySites XF86News XF86OfficeHome XF86Phone XF86Reload XF86ScrollUp XF86ScrollDown XF86ScrollClick XF86Support XF86TaskPane XF86Tools XF86Travel XF86Video XF86ZoomIn XF86ZoomOut XF86Messenger XF86WebCam XF86Pictures XF86Music XF86AudioForward XF86AudioRepeat XF86AudioRandomPlay XF86AudioCycleTrack XF86CycleAngle XF86FrameBack XF86FrameForward XF86Time XF86View XF86AudioPreset XF86FullScreen XF86AspectRatio XF86DVD XF86Audio XF86Break XF86VideoPhone XF86ZoomReset XF86Voicemail XF86DisplayToggle XF86MediaRepeat XF86Images XF86NotificationCenter XF86PickupPhone XF86HangupPhone XF86CameraFocus XF86CameraZoomIn XF86CameraZoomOut XF86CameraUp XF86CameraDown XF86CameraLeft XF86CameraRight XF86ControlPanel XF86AppSelect XF86VoiceCommand XF86Assistant XF86RightUp XF86RightDown XF86LeftUp XF86LeftDown XF86AudioDesc XF863DMode XF86NextFavorite XF86StopRecord XF86PauseRecord XF86VOD XF86FastReverse XF86SlowReverse XF86Data XF86Macro1 XF86Macro2 XF86Macro3 XF86Macro4 XF86Macro5 XF86Macro6 XF86Macro7 XF86Macro8 XF86Macro9 XF86Macro10 XF86Macro11 XF86Macro12 XF86Macro13 XF86Macro14 XF86Macro15 XF86Macro16 XF86Macro17 XF86Macro18 XF86Macro19 XF86Macro20 XF86Macro21 XF86Macro22 XF86Macro23 XF86Macro24 XF86Macro25 XF86Macro26 XF86Macro27 XF86Macro28 XF86Macro29 XF86Macro30 XF86MacroPreset1 XF86MacroPreset2 XF86MacroPreset3 XF86MacroRecordStart XF86MacroRecordStop XF86MacroPresetCycle XF86KbdInputAssistPrev XF86KbdInputAssistNext'
complete -c vqmctl -n "__vqmctl_at remote press" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at remote press" -l times -x -a '' -d 'How often to press it, up to 10000 times'
complete -c vqmctl -n "__vqmctl_at remote press" -l hold -x -a '' -d 'How long to hold it down each time, up to 60000'
complete -c vqmctl -n "__vqmctl_at remote press" -l wait -x -a '' -d 'How long to wait for the application to hold it, up to 60000'
complete -c vqmctl -n "__vqmctl_at remote press" -l anyway -d 'Press it whoever receives it, held or not'
complete -c vqmctl -n "__vqmctl_at schedule" -a show -d 'Print a schedule document as the TV reads it'
complete -c vqmctl -n "__vqmctl_at schedule" -a at -d 'Tell what plays at a time, why, and when that changes'
complete -c vqmctl -n "__vqmctl_at schedule" -a lint -d 'Find what is wrong with schedule documents, and where'
complete -c vqmctl -n "__vqmctl_at schedule" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at schedule show" -a '(__fish_complete_suffix .xml)'
complete -c vqmctl -n "__vqmctl_at schedule show" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at schedule show" -l json -d 'Print Docs/schemas/schedule-show.schema.json'
complete -c vqmctl -n "__vqmctl_at schedule at" -a '(__fish_complete_suffix .xml)'
complete -c vqmctl -n "__vqmctl_at schedule at" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at schedule at" -l json -d 'Print Docs/schemas/schedule-at.schema.json'
complete -c vqmctl -n "__vqmctl_at schedule lint" -a '(__fish_complete_suffix .xml)'
complete -c vqmctl -n "__vqmctl_at schedule lint" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at schedule lint" -l format -x -a 'human oneline json' -d 'human, oneline or json'
complete -c vqmctl -n "__vqmctl_at schedule lint" -l strict -d 'Notes count as findings too'
complete -c vqmctl -n "__vqmctl_at schedule lint" -l ignore -x -a 'not-well-formed unreadable-encoding text-after-nul too-large doctype state-missing state-not-first state-not-ok no-schedule no-items unknown-element misspelt-element misplaced-element repeated-element unknown-attribute misspelt-attribute missing-attribute attribute-beyond-slots schedule-in-schedule item-outside-schedule item-in-item child-outside-item missing-child repeated-child element-in-text format-before-name stray-text time-malformed time-without-seconds time-not-digits time-out-of-range time-after-midnight hour-24 time-style start-not-before-end overlapping-periods date-not-year-month-day impossible-date date-style expired number-not-digits number-wraps negative-number size-in-pieces size-zero item-count-mismatch total-size-mismatch empty-name empty-format white-space-in-name blank-in-name path-separator-in-name dot-in-format extension-twice duplicate-id duplicate-order duplicate-file not-an-address empty-address not-a-subnet-mask gateway-outside-subnet master-not-own-address is-master-value' -d 'Find nothing by this rule; may be given again'
complete -c vqmctl -n "__vqmctl_at schedule lint" -l at -x -a '' -d 'The day that expiration dates are compared with; today by default'
complete -c vqmctl -n "__vqmctl_at status" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at status" -l constants -x -a '(__fish_complete_suffix .xml)' -d 'The constants file; \'-\' is stdin'
complete -c vqmctl -n "__vqmctl_at status" -l json -d 'Print one JSON document'
complete -c vqmctl -n "__vqmctl_at check" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at check" -l constants -x -a '(__fish_complete_suffix .xml)' -d 'The constants file; \'-\' is stdin'
complete -c vqmctl -n "__vqmctl_at check" -l json -d 'Print one JSON document; with --watch one on each line'
complete -c vqmctl -n "__vqmctl_at check" -l watch -d 'Check again after each change, until Ctrl-C'
complete -c vqmctl -n "__vqmctl_at constants" -a get -d 'Print the value of a constant'
complete -c vqmctl -n "__vqmctl_at constants" -a list -d 'Print all constants'
complete -c vqmctl -n "__vqmctl_at constants" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at constants get" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at constants get" -l file -x -a '(__fish_complete_suffix .xml)' -d 'The constants file; \'-\' is stdin'
complete -c vqmctl -n "__vqmctl_at constants get" -l json -d 'Print one JSON document'
complete -c vqmctl -n "__vqmctl_at constants list" -s h -l help -d 'Print this help and exit'
complete -c vqmctl -n "__vqmctl_at constants list" -l file -x -a '(__fish_complete_suffix .xml)' -d 'The constants file; \'-\' is stdin'
complete -c vqmctl -n "__vqmctl_at constants list" -l json -d 'Print one JSON document'
