#include "RemoteControl/RemoteWindow.h"

#include <cstdlib>
#include <utility>
#include <vector>

#include <Ecore_X.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Platform/desktop/x11/WindowManager.h"
#include "RemoteControl/ApplicationProcess.h"
#include "RemoteControl/KeyLayout.h"
#include "RemoteControl/Popup.h"

namespace {

constexpr char kTitle[] = "Remote control";
constexpr char kSetting[] = "Sync demo";
constexpr int kActionRow = kBelowKeys + 22;
constexpr int kActionHeight = 62;
constexpr int kFooterHeight = 66;
constexpr int kFooterSize = 11;
constexpr Colour kBody{30, 33, 38};
constexpr Colour kText{240, 242, 245};
constexpr Colour kDim{171, 178, 191};
constexpr Colour kLine{62, 68, 80};

struct Words {
    Button::Mark mark;
    const char* words;
};

/// What a button says of its key.
Words WordsFor(KeyUse use)
{
    switch (use) {
    case KeyUse::kHeld:
        return {Button::Mark::kDisc, "held"};
    case KeyUse::kHandedBack:
        return {Button::Mark::kRing, "handed back"};
    case KeyUse::kTaken:
        return {Button::Mark::kDash, "taken"};
    case KeyUse::kNeither:
    case KeyUse::kNotRunning:
        break;
    }
    return {Button::Mark::kDash, "nobody's"};
}

std::vector<std::string> Symbols()
{
    std::vector<std::string> symbols;
    for (const RemoteKey& key : RemoteKeys()) {
        symbols.emplace_back(key.symbol);
    }
    return symbols;
}

/// `place` is in pixels.
void AddRectangle(Evas* canvas, const Colour& colour, const Eina_Rectangle& place)
{
    Evas_Object* rectangle = evas_object_rectangle_add(canvas);
    evas_object_color_set(rectangle, colour.red, colour.green, colour.blue, 255);
    evas_object_geometry_set(rectangle, place.x, place.y, place.w, place.h);
    evas_object_show(rectangle);
}

void OnCloseRequested(void* /*data*/, Evas_Object* /*object*/, void* /*event*/)
{
    elm_exit();
}

} // namespace

RemoteWindow::RemoteWindow(const RemoteOptions& options) : options_(options)
{
    Build();
    // After the toolkit has opened its display: both set Xlib's error handler.
    tv_ = std::make_unique<TvKeys>(options_.display, Symbols(), [this](const TvState& state) { ShowState(state); });
    AddKeys();
    AddActions();
    // Registered before the first read, so that no change falls between the two.
    CVQMSyncDemoMonitor::SetVconfCallBack(reinterpret_cast<void*>(&RemoteWindow::OnSettingChanged), this);
    ShowSetting();
    keyHandler_ = ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, OnKeyDown, this);
    evas_object_show(window_);
}

RemoteWindow::~RemoteWindow()
{
    tv_.reset();
    if (keyHandler_ != nullptr) {
        ecore_event_handler_del(keyHandler_);
    }
    CVQMSyncDemoMonitor::UnSetVconfCallBack(reinterpret_cast<void*>(&RemoteWindow::OnSettingChanged));
    buttons_.clear();
    evas_object_del(window_);
}

void RemoteWindow::Build()
{
    window_ = elm_win_add(nullptr, "remote-control", ELM_WIN_BASIC);
    elm_win_title_set(window_, kTitle);
    evas_object_smart_callback_add(window_, "delete,request", OnCloseRequested, nullptr);
    Evas* canvas = evas_object_evas_get(window_);
    const int height = Pixels(kActionRow + (options_.start.empty() ? 1 : 2) * kActionHeight + kFooterHeight);

    AddRectangle(canvas, kBody, {0, 0, Pixels(kWindowWidth), height});
    AddRectangle(canvas, kLine, {Pixels(kMargin), Pixels(kBelowKeys + 11), Pixels(kWindowWidth - 2 * kMargin), 1});

    headline_ = AddText(canvas, "", true, 12, kText);
    evas_object_move(headline_, Pixels(kMargin), Pixels(15));
    Evas_Object* tools = AddText(canvas, "Tool keys", false, 10, kDim);
    evas_object_move(tools, Pixels(kMargin + 2), Pixels(kToolRow - 18));
    AddFooter(canvas, height);

    evas_object_size_hint_min_set(window_, Pixels(kWindowWidth), height);
    evas_object_size_hint_max_set(window_, Pixels(kWindowWidth), height);
    evas_object_resize(window_, Pixels(kWindowWidth), height);
    if (options_.x >= 0 && options_.y >= 0) {
        evas_object_move(window_, options_.x, options_.y);
    }
    // The toolkit draws nothing before a window manager has mapped the window. Without a manager, it must
    // not wait for one.
    auto* display = static_cast<Display*>(ecore_x_display_get());
    elm_win_override_set(window_, desktop::IsWindowManaged(display) ? EINA_FALSE : EINA_TRUE);
}

/// Two lines for what happened last.
void RemoteWindow::AddFooter(Evas* canvas, int windowHeight)
{
    const std::string style = "DEFAULT='font=Sans font_size=" + std::to_string(Pixels(kFooterSize)) +
                              " color=#f0f2f5 wrap=mixed ellipsis=1.0'";
    Evas_Textblock_Style* look = evas_textblock_style_new();
    evas_textblock_style_set(look, style.c_str());
    footer_ = evas_object_textblock_add(canvas);
    evas_object_textblock_style_set(footer_, look);
    evas_textblock_style_free(look); // the text keeps it as long as it needs it
    evas_object_move(footer_, Pixels(kMargin), windowHeight - Pixels(kFooterHeight - 12));
    evas_object_resize(footer_, Pixels(kWindowWidth - 2 * kMargin), Pixels(kFooterHeight - 24));
    evas_object_show(footer_);
}

void RemoteWindow::AddKeys()
{
    for (const RemoteKey& key : RemoteKeys()) {
        const std::string symbol = key.symbol;
        auto button = std::make_unique<Button>(evas_object_evas_get(window_), key.place, key.caption, key.hint,
                                               [this, symbol] { tv_->Press(symbol); });
        if (key.stripe != nullptr) {
            button->AddStripe(*key.stripe);
        }
        byHostKey_.emplace(symbol, button.get());
        for (const std::string_view hostKey : key.hostKeys) {
            byHostKey_.emplace(hostKey, button.get());
        }
        buttons_.emplace(symbol, std::move(button));
    }
}

void RemoteWindow::AddActions()
{
    AddAction(PlaceInRow(kActionRow, 0, 2), kSetting, "D", "d", [] {
        const bool enable = !CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
        CVQMSyncDemoMonitor::SetSyncDemoVocnf(enable);
        return std::string(enable ? "The sync demo is switched on" : "The sync demo is switched off");
    });
    AddAction(PlaceInRow(kActionRow, 1, 2), "Send a popup", "N", "n", SendPopup);
    if (!options_.start.empty()) {
        const int row = kActionRow + kActionHeight;
        AddAction(PlaceInRow(row, 0, 2), "Start", "A", "a",
                  [this] { return StartApplication(options_.start, options_.display); });
        AddAction(PlaceInRow(row, 1, 2), "End", "E", "e", [this] { return EndApplication(application_); });
        buttons_.at("Start")->SetState(Button::Mark::kNone, "the application");
        buttons_.at("End")->SetState(Button::Mark::kNone, "the application");
    }
    buttons_.at("Send a popup")->SetState(Button::Mark::kNone, "to the TV");
}

void RemoteWindow::AddAction(const Place& place, const char* caption, const char* hint, const char* hostKey,
                             std::function<std::string()> action)
{
    auto button = std::make_unique<Button>(evas_object_evas_get(window_), place, caption, hint,
                                           [this, act = std::move(action)] { Say(act()); });
    byHostKey_.emplace(hostKey, button.get());
    buttons_.emplace(caption, std::move(button));
}

void RemoteWindow::ShowState(const TvState& state)
{
    application_ = state.application;
    const std::string headline = application_ == 0 ? std::string("The application does not run")
                                                   : "The application runs as process " + std::to_string(application_);
    evas_object_text_text_set(headline_, headline.c_str());
    for (const auto& [key, use] : state.uses) {
        const Words words = WordsFor(use);
        buttons_.at(key)->SetState(words.mark, words.words);
    }
    if (state.said != said_) {
        said_ = state.said;
        Say(said_);
    }
}

void RemoteWindow::ShowSetting()
{
    const bool enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    buttons_.at(kSetting)->SetState(enabled ? Button::Mark::kDisc : Button::Mark::kRing, enabled ? "on" : "off");
}

void RemoteWindow::Say(const std::string& sentence)
{
    char* markup = evas_textblock_text_utf8_to_markup(footer_, sentence.c_str());
    evas_object_textblock_text_markup_set(footer_, markup);
    std::free(markup);
}

void RemoteWindow::OnSettingChanged(keynode_t* /*node*/, void* data)
{
    static_cast<RemoteWindow*>(data)->ShowSetting();
}

Eina_Bool RemoteWindow::OnKeyDown(void* data, int /*type*/, void* event)
{
    const auto* self = static_cast<RemoteWindow*>(data);
    const auto* key = static_cast<const Ecore_Event_Key*>(event);
    constexpr unsigned int kForOthers = ECORE_EVENT_MODIFIER_CTRL | ECORE_EVENT_MODIFIER_ALT | ECORE_EVENT_MODIFIER_WIN;
    if ((key->modifiers & kForOthers) == 0) {
        const auto found = self->byHostKey_.find(std::string_view(key->keyname));
        if (found != self->byHostKey_.end()) {
            found->second->Press();
        }
    }
    return ECORE_CALLBACK_PASS_ON;
}
