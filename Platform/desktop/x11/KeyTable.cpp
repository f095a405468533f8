#include "Platform/desktop/x11/KeyTable.h"

#include <array>

namespace desktop {

namespace {

/// In the order of the ids. The application releases ten of them, the keys that every other program
/// needs: 10 power, 17 exit, 26 to 30 arrows and return, 31 back, 75 and 76 volume.
constexpr std::array<const char*, kKeyIds> kNames = {{
    // clang-format off
    /*   0 */ "XF86SimpleMenu", "XF86More", "XF86MenuKB", "XF86TopMenu",
    /*   4 */ "XF86MediaTopMenu", "XF86RootMenu", "XF86ContextMenu", "XF86HomePage",
    /*   8 */ "XF86Red", "XF86Green", "XF86PowerOff", "XF86Yellow",
    /*  12 */ "XF86Blue", "XF86Info", "XF86ChannelUp", "XF86ChannelDown",
    /*  16 */ "XF8610ChannelsUp", "XF86Close", "XF8610ChannelsDown", "XF86AudioMute",
    /*  20 */ "XF86Unmute", "XF86Select", "XF86Option", "XF86Subtitle",
    /*  24 */ "XF86AudioPlay", "XF86AudioStop", "Up", "Down",
    /*  28 */ "Left", "Right", "Return", "XF86Back",
    /*  32 */ "XF86AudioPrev", "XF86AudioNext", "XF86Mail", "XF86Start",
    /*  36 */ "XF86Search", "XF86AudioRecord", "XF86Calendar", "XF86RockerUp",
    /*  40 */ "XF86RockerDown", "XF86RockerEnter", "XF86Forward", "XF86Stop",
    /*  44 */ "XF86Refresh", "XF86Eject", "XF86WWW", "XF86Favorites",
    /*  48 */ "XF86AudioPause", "XF86AudioMedia", "XF86MyComputer", "XF86VendorHome",
    /*  52 */ "XF86Shop", "XF86History", "XF86OpenURL", "XF86AddFavorite",
    /*  56 */ "XF86HotLinks", "XF86Community", "XF86AudioRewind", "XF86BackForward",
    /*  60 */ "XF86Launch0", "XF86Launch1", "XF86Launch2", "XF86Launch3",
    /*  64 */ "XF86Launch4", "XF86Launch5", "XF86Launch6", "XF86Launch7",
    /*  68 */ "XF86Launch8", "XF86Launch9", "XF86LaunchA", "XF86LaunchB",
    /*  72 */ "XF86LaunchC", "XF86LaunchD", "XF86LaunchE", "XF86AudioRaiseVolume",
    /*  76 */ "XF86AudioLowerVolume", "XF86LaunchF", "XF86ApplicationLeft", "XF86ApplicationRight",
    /*  80 */ "XF86Book", "XF86CD", "XF86Clear", "XF86Display",
    /*  84 */ "XF86Game", "XF86Go", "XF86Market", "XF86Meeting",
    /*  88 */ "XF86MySites", "XF86News", "XF86OfficeHome", "XF86Phone",
    /*  92 */ "XF86Reload", "XF86ScrollUp", "XF86ScrollDown", "XF86ScrollClick",
    /*  96 */ "XF86Support", "XF86TaskPane", "XF86Tools", "XF86Travel",
    /* 100 */ "XF86Video", "XF86ZoomIn", "XF86ZoomOut", "XF86Messenger",
    /* 104 */ "XF86WebCam", "XF86Pictures", "XF86Music", "XF86AudioForward",
    /* 108 */ "XF86AudioRepeat", "XF86AudioRandomPlay", "XF86AudioCycleTrack", "XF86CycleAngle",
    /* 112 */ "XF86FrameBack", "XF86FrameForward", "XF86Time", "XF86View",
    /* 116 */ "XF86AudioPreset", "XF86FullScreen", "XF86AspectRatio", "XF86DVD",
    /* 120 */ "XF86Audio", "XF86Break", "XF86VideoPhone", "XF86ZoomReset",
    /* 124 */ "XF86Voicemail", "XF86DisplayToggle", "XF86MediaRepeat", "XF86Images",
    /* 128 */ "XF86NotificationCenter", "XF86PickupPhone", "XF86HangupPhone", "XF86CameraFocus",
    /* 132 */ "XF86CameraZoomIn", "XF86CameraZoomOut", "XF86CameraUp", "XF86CameraDown",
    /* 136 */ "XF86CameraLeft", "XF86CameraRight", "XF86ControlPanel", "XF86AppSelect",
    /* 140 */ "XF86VoiceCommand", "XF86Assistant", "XF86RightUp", "XF86RightDown",
    /* 144 */ "XF86LeftUp", "XF86LeftDown", "XF86AudioDesc", "XF863DMode",
    /* 148 */ "XF86NextFavorite", "XF86StopRecord", "XF86PauseRecord", "XF86VOD",
    /* 152 */ "XF86FastReverse", "XF86SlowReverse", "XF86Data", "XF86Macro1",
    /* 156 */ "XF86Macro2", "XF86Macro3", "XF86Macro4", "XF86Macro5",
    /* 160 */ "XF86Macro6", "XF86Macro7", "XF86Macro8", "XF86Macro9",
    /* 164 */ "XF86Macro10", "XF86Macro11", "XF86Macro12", "XF86Macro13",
    /* 168 */ "XF86Macro14", "XF86Macro15", "XF86Macro16", "XF86Macro17",
    /* 172 */ "XF86Macro18", "XF86Macro19", "XF86Macro20", "XF86Macro21",
    /* 176 */ "XF86Macro22", "XF86Macro23", "XF86Macro24", "XF86Macro25",
    /* 180 */ "XF86Macro26", "XF86Macro27", "XF86Macro28", "XF86Macro29",
    /* 184 */ "XF86Macro30", "XF86MacroPreset1", "XF86MacroPreset2", "XF86MacroPreset3",
    /* 188 */ "XF86MacroRecordStart", "XF86MacroRecordStop", "XF86MacroPresetCycle", "XF86KbdInputAssistPrev",
    /* 192 */ "XF86KbdInputAssistNext",
    // clang-format on
}};

constexpr int kSimpleMenu = 0;
constexpr int kMore = 1;

} // namespace

const char* KeyName(int keyId)
{
    return keyId >= 0 && keyId < kKeyIds ? kNames[static_cast<std::size_t>(keyId)] : nullptr;
}

bool IsToolKey(int keyId)
{
    return keyId == kSimpleMenu || keyId == kMore;
}

} // namespace desktop
