#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QBuffer>
#include <QCoreApplication>
#include <csignal>
#include <cstdlib>

#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/FirstState.h"
#include "program/PictureApplication.h"
#include "program/Process.h"
#include "program/TerminalGraph.h"
#include "support/AtomicFile.h"
#include "ui/GlucoseGraphRenderer.h"

namespace tidewell {

namespace {

std::unique_ptr<QCoreApplication> makeApplication(bool forPictures)
{
    if (forPictures)
        return makePictureApplication();
    auto& [count, values] = processArguments();
    return std::make_unique<QCoreApplication>(count, values);
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

ExitCode drawState(Core& core, const GraphOptions& options, ExitCode code)
{
    const StatusBarState& state = core.viewModel().state();
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
    auto core = Core::make(
        {.demo = options.demo, .demoScenario = options.demoScenario, .sharing = SharingKind::asker});
    if (!core)
        return report(core.error());
    ExitCode code = ExitCode::failure;
    {
        (*core)->launch({});
        const FirstState first{**core};
        QCoreApplication::exec();
        code = first.came() ? drawState(**core, options, first.exitCode())
                            : report({ExitCode::failure, "Ended before there was a reading."});
    }
    endProcessUnless((*core)->shutDown(), code);
    return code;
}

}  // namespace tidewell
