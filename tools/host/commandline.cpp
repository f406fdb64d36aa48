#include "tools/host/commandline.h"

#include <cmath>

namespace rataip::host {

namespace {

// A week: far beyond any use, and its milliseconds fit every timer.
constexpr double kLongestSeconds = 7.0 * 24.0 * 3600.0;

/** The parser's sentences end in a full stop, ours do not. */
QString withoutFullStop(QString sentence) {
    if (sentence.endsWith(QLatin1Char('.'))) {
        sentence.chop(1);
    }
    return sentence;
}

QString nameOf(const QCommandLineOption& option) {
    return option.names().constFirst();
}

}  // namespace

CommandLine::CommandLine(const QList<QCommandLineOption>& options)
    : m_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")),
      m_version({QStringLiteral("v"), QStringLiteral("version")},
                QStringLiteral("Show the version.")) {
    m_parser.addPositionalArgument(QStringLiteral("plugin"),
                                   QStringLiteral("The plugin's library file. Without it, the "
                                                  "plugin beside the program or in ../plugins "
                                                  "is taken."),
                                   QStringLiteral("[plugin]"));
    m_parser.addOptions({m_help, m_version});
    m_parser.addOptions(options);
}

void CommandLine::parse(const QStringList& arguments) {
    if (!m_parser.parse(arguments)) {
        complain(withoutFullStop(m_parser.errorText()));
    }
}

CommandLine::Request CommandLine::request() const {
    if (!m_error.isEmpty()) {
        return Request::Run;
    }
    if (m_parser.isSet(m_help)) {
        return Request::ShowHelp;
    }
    return m_parser.isSet(m_version) ? Request::ShowVersion : Request::Run;
}

void CommandLine::complain(const QString& sentence) {
    if (m_error.isEmpty()) {
        m_error = sentence;
    }
}

bool CommandLine::isSet(const QCommandLineOption& option) const {
    return m_parser.isSet(option);
}

QString CommandLine::text(const QCommandLineOption& option) const {
    return m_parser.value(option);
}

QString CommandLine::pluginPath() {
    const QStringList files = m_parser.positionalArguments();
    if (files.isEmpty()) {
        return {};
    }
    if (files.size() > 1) {
        complain(QStringLiteral("one plugin at a time, not also \"%1\"").arg(files.at(1)));
    }
    if (files.constFirst().isEmpty()) {
        complain(QStringLiteral("the plugin's path is empty"));
    }
    return files.constFirst();
}

std::optional<std::chrono::milliseconds> CommandLine::seconds(const QCommandLineOption& option,
                                                              double least) {
    if (!isSet(option)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double seconds = text(option).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(seconds) || seconds < least || seconds > kLongestSeconds) {
        complain(QStringLiteral("--%1 takes seconds from %2 to %3, not \"%4\"")
                     .arg(nameOf(option))
                     .arg(least)
                     .arg(kLongestSeconds, 0, 'f', 0)
                     .arg(text(option)));
        return std::nullopt;
    }
    return std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

std::optional<int> CommandLine::count(const QCommandLineOption& option) {
    if (!isSet(option)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const int count = text(option).toInt(&isNumber);
    if (!isNumber || count < 1) {
        complain(QStringLiteral("--%1 takes a whole number from 1 on, not \"%2\"")
                     .arg(nameOf(option), text(option)));
        return std::nullopt;
    }
    return count;
}

QString CommandLine::folder(const QCommandLineOption& option) {
    QString path = text(option);
    if (isSet(option) && path.isEmpty()) {
        complain(QStringLiteral("--%1 takes a folder").arg(nameOf(option)));
    }
    return path;
}

QString CommandLine::helpText(const QString& description) {
    m_parser.setApplicationDescription(description);
    return m_parser.helpText();
}

}  // namespace rataip::host
