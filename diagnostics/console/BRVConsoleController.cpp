#include "diagnostics/console/BRVConsoleController.h"

#include "diagnostics/console/RichText.h"
#include "diagnostics/log/ZRKQueue.h"
#include "platform/FileWriting.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/SuddenTermination.h"
#include "platform/ui/Alert.h"
#include "platform/ui/TextAppearance.h"
#include "platform/ui/WeakAction.h"
#include "version/ZRKSystemVersionManager.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

using namespace platform;
using namespace platform::ui;

namespace {

bool hasExtension(std::string_view path, std::string_view extension)
{
    const auto name = path.substr(path.rfind('/') + 1);
    const auto dot = name.rfind('.');
    return dot != std::string_view::npos && std::ranges::equal(name.substr(dot + 1), extension, {}, [](char character) {
               return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
           });
}

Result<void> writeChoice(const SavePanel::Choice& choice, const StyledText& text, const FontDescription& font)
{
    const auto written = hasExtension(choice.path, "rtf") ? writeFileAtomically(choice.path, richText(text, font))
                                                          : writeFileAtomically(choice.path, text.string());
    if (written && !choice.tagNames.empty())
        setTagNames(choice.path, choice.tagNames);
    return written;
}

} // namespace

BRVConsoleController::BRVConsoleController() : _exportQueue(ZRKQueueContextCreate("com.zerkolin.brevane.export")) { }

BRVConsoleController::~BRVConsoleController()
{
    _exportQueue->sync([] { });
}

std::shared_ptr<BRVConsoleController> BRVConsoleController::create()
{
    return std::shared_ptr<BRVConsoleController>(new BRVConsoleController());
}

std::shared_ptr<Window> BRVConsoleController::window() const
{
    return _interface ? _interface->window() : nullptr;
}

void BRVConsoleController::showWindow()
{
    if (!_interface)
        loadWindow();
    window()->makeKeyAndOrderFront();
}

void BRVConsoleController::loadWindow()
{
    _interface = Interface::load(windowNibName);
    _textView = _interface->outlet<TextView>("consoleTextView");
    _spinningIndicator = _interface->outlet<ProgressIndicator>("consoleSpinner");
    _refreshButton = _interface->outlet<Button>("consoleRefreshButton");
    _exportButton = _interface->outlet<Button>("consoleExportButton");
    _stopButton = _interface->outlet<Button>("consoleStopButton");
    const auto action = weakActions(weak_from_this());
    _refreshButton->setAction(action([](BRVConsoleController& self) { self.refresh(); }));
    _exportButton->setAction(action([](BRVConsoleController& self) { self.exportLog(); }));
    _stopButton->setAction(action([](BRVConsoleController& self) { self.stopFetch(); }));
    _patience =
        ClockTimer::create(ClockTimer::Clock::SinceBoot, Queue::main(),
                           action([](BRVConsoleController& self) { self._stopButton->setHidden(!self._fetch); }));
    window()->layoutIfNeeded();
    window()->center();
    windowDidLoad();
}

void BRVConsoleController::windowDidLoad()
{
    // Selected lines keep their colours.
    _textView->setSelectedTextAttributes({.background = NamedColor::SelectedTextBackground, .foreground = {}});
    refresh();
}

void BRVConsoleController::refresh()
{
    if (_fetch)
        return;
    _fetch = std::make_shared<LogFetch>();
    setFetching(true);
    Queue::global()->async([weak = weak_from_this(), fetch = _fetch] {
        const bool unified = ZRKSystemVersionManager::sharedManager().runningAtLeast(2);
        auto text = prepareText(std::make_shared<const StyledText>(unified ? fetchLog(*fetch) : fetchASL()));
        Queue::main()->async([weak, fetch, text = std::move(text)]() mutable {
            if (const auto self = weak.lock())
                self->finishRefresh(fetch, std::move(text));
        });
    });
}

void BRVConsoleController::setFetching(bool fetching)
{
    if (fetching)
        _spinningIndicator->startAnimation();
    else
        _spinningIndicator->stopAnimation();
    _refreshButton->setEnabled(!fetching);
    _exportButton->setEnabled(!fetching);
    _stopButton->setHidden(true);
    _patience->set(fetching ? std::optional(readClocks().sinceBoot + PatientTime) : std::nullopt);
}

void BRVConsoleController::stopFetch()
{
    if (!_fetch)
        return;
    _fetch->stop();
    _fetch.reset(); // its text will be nobody's, whenever it comes
    _textView->setPlaceholderString(localizedString("The log was not read to its end."));
    setFetching(false);
}

void BRVConsoleController::finishRefresh(const std::shared_ptr<LogFetch>& fetch, PreparedText text)
{
    if (fetch != _fetch)
        return;
    _fetch.reset();
    _textView->setPlaceholderString(fetch->failure.empty() ? localizedString("No messages.") : fetch->failure);
    auto earlier = _textView->setTextStorage(std::move(text));
    _textView->scrollToEndOfDocument();
    setFetching(false);
    // A long text takes a while to free.
    Queue::global()->async([earlier = std::move(earlier)]() mutable { earlier = {}; });
}

void BRVConsoleController::exportLog()
{
    SavePanel panel;
    panel.setAllowedFileTypes({"rtf", "txt"});
    panel.setNameFieldStringValue(localizedString("Brevane Log"));
    panel.beginSheet(window(), [weak = weak_from_this()](const std::optional<SavePanel::Choice>& choice) {
        const auto self = weak.lock();
        if (self && choice)
            self->write(*choice);
    });
}

void BRVConsoleController::write(const SavePanel::Choice& choice)
{
    // A long text takes a while to write, too; it is the one of this moment, whatever is fetched meanwhile.
    _exportQueue->async([weak = weak_from_this(), choice, text = _textView->textStorage(), font = userFixedPitchFont(),
                         pause = std::make_shared<SuddenTerminationPause>()] {
        const auto written = writeChoice(choice, *text, font);
        if (written)
            return;
        Queue::main()->async([weak, error = written.error()] {
            if (const auto self = weak.lock())
                self->presentError(error);
        });
    });
}

void BRVConsoleController::presentError(const Error& error)
{
    Alert alert;
    alert.setStyle(AlertStyle::Warning);
    alert.setMessageText(localizedDescription(error));
    if (error.underlying)
        alert.setInformativeText(localizedDescription(*error.underlying));
    alert.beginSheet(window(), {});
}
