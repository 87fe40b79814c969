#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QBuffer>
#include <QGuiApplication>
#include <csignal>
#include <cstdlib>

#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/Process.h"
#include "program/TerminalGraph.h"
#include "support/AtomicFile.h"
#include "support/Log.h"
#include "ui/GlucoseGraphRenderer.h"

namespace tidewell {

namespace {

const Log graphLog{"GraphCommand"};

/// Waits for the first state that holds a reading or a problem. Main thread.
class FirstState {
public:
    explicit FirstState(Core& core) : core_{core} {}

    static asio::awaitable<void> wait(std::weak_ptr<FirstState> weak, Core& core)
    {
        co_await core.launched();
        if (weak.expired())
            co_return;
        co_await core.coordinator().refreshNow();
        if (const auto self = weak.lock())
            self->observe();
    }

    [[nodiscard]] bool came() const { return came_; }

private:
    void observe()
    {
        look(core_.viewModel().state());
        observer_ = core_.viewModel().observe([this](const StatusBarState& state) { look(state); });
    }

    void look(const StatusBarState& state)
    {
        if (!watchIsSettled(state))
            return;
        came_ = true;
        QCoreApplication::quit();
    }

    Core& core_;
    bool came_ = false;
    std::shared_ptr<void> observer_;
};

/// Pictures need fonts, which the toolkit has with a display only, or with the one that needs none.
std::unique_ptr<QCoreApplication> makeApplication(bool forPictures)
{
    auto& [count, values] = processArguments();
    if (!forPictures)
        return std::make_unique<QCoreApplication>(count, values);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // What the toolkit misses of a desktop is nothing that a picture needs.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
        graphLog.debug(text.toStdString());
    });
    return std::make_unique<QGuiApplication>(count, values);
}

bool isSet(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value && *value;
}

TerminalGraphStyle terminalStyle()
{
    TerminalGraphStyle style;
    const char* const name = std::getenv("TERM");
    const std::string_view terminal{name ? name : ""};
    style.braille = terminal != "linux";
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return style;
    style.color = terminal != "dumb" && !isSet("NO_COLOR");
    // A terminal that does not know its size says 0. Header, axis and the next prompt take six lines.
    if (size.ws_col > 0)
        style.columns = size.ws_col;
    if (size.ws_row > 0)
        style.plotRows = std::clamp(size.ws_row - 6, 8, 24);
    return style;
}

std::string png(const QImage& image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? buffer.data().toStdString() : std::string{};
}

ExitCode draw(const GlucoseGraphContent& content, const GraphOptions& options, ExitCode code)
{
    if (!options.output) {
        fmt::print("{}", terminalGraph(content, terminalStyle()));
        return code;
    }
    const GraphPictureStyle style{.theme = options.dark ? GraphTheme::dark : GraphTheme::light,
                                  .pixelRatio = options.pixelRatio,
                                  .textScale = options.textScale};
    const std::string picture = options.output->format == GraphOutput::Format::svg
                                    ? glucoseGraphSvg(content, style).toStdString()
                                    : png(glucoseGraphImage(content, style));
    const auto& file = options.output->file;
    if (picture.empty())
        return report({ExitCode::failure, "The picture could not be made."});
    if (const auto error = writeFileAtomically(file, picture))
        return report({ExitCode::failure, "The picture cannot be written to \"" + file.string() +
                                              "\": " + error.message() + "."});
    return code;
}

ExitCode drawState(Core& core, const GraphOptions& options)
{
    const StatusBarState& state = core.viewModel().state();
    const auto& problem = core.configuration().problem();
    const ExitCode code = problem && problem->error.kind == ConfigurationError::Kind::keychainError
                              ? ExitCode::keyring
                              : watchExitCode(state);
    // Without readings there is nothing to draw, and an older picture is not replaced by an empty one.
    if (state.currentError)
        (void)report({code, problemSentence(*state.currentError)});
    if (!state.presentedReading)
        return code;
    const AppSettings& settings = core.configuration().settings();
    const GlucoseGraphContent content{
        .glucoseHistory = state.glucoseHistory,
        .settings = settings,
        .timeWindow = graphTimeWindow(options.hours ? options.hours : settings.graphTimeWindowHours),
        .now = core.clock().now(),
        .zone = TimeZone::current()};
    return draw(content, options, code);
}

}  // namespace

std::optional<GraphOutput> graphOutput(const std::string& path)
{
    GraphOutput output{.file = path};
    const std::string extension = lowerCased(output.file.extension().string());
    if (extension != ".png" && extension != ".svg")
        return {};
    output.format = extension == ".svg" ? GraphOutput::Format::svg : GraphOutput::Format::png;
    return output;
}

ExitCode runGraph(const GraphOptions& options)
{
    endAtOnceOn(endingSignals);
    const auto application = makeApplication(options.output.has_value());
    const UnixSignals signals{endingSignals, [](int) { QCoreApplication::quit(); }};
    auto core = Core::make({.demo = options.demo, .demoScenario = options.demoScenario});
    if (!core)
        return report(core.error());
    ExitCode code = ExitCode::failure;
    {
        const auto first = std::make_shared<FirstState>(**core);
        (*core)->launch({}, nullptr);
        asio::co_spawn((*core)->main(), FirstState::wait(first, **core), asio::detached);
        QCoreApplication::exec();
        code = first->came() ? drawState(**core, options)
                             : report({ExitCode::failure, "Ended before there was a reading."});
    }
    endProcessUnless((*core)->shutDown(), code);
    return code;
}

}  // namespace tidewell
