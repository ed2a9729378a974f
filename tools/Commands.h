#pragma once

#include "Catalogue.h"

#include "VersionNumber.h"

#include <QCommandLineParser>
#include <QDateTime>

#include <cstdio>

namespace qv {

/// How a command ends: all is well, there is something (or, for "offer", nothing) to tell, it could not work.
enum ExitCode { Done = 0, Findings = 1, Error = 2 };

// The commands. Each adds its options, then works on the parsed command line and prints. They throw Failure.
void addLintOptions(QCommandLineParser &parser);
void addShowOptions(QCommandLineParser &parser);
void addOfferOptions(QCommandLineParser &parser);
void addSealOptions(QCommandLineParser &parser);
void addVerifyOptions(QCommandLineParser &parser);

ExitCode lint(const QString &source, const QCommandLineParser &options);
ExitCode show(const QString &source, const QCommandLineParser &options);
ExitCode offer(const QString &source, const QCommandLineParser &options);
ExitCode seal(const QString &source, const QCommandLineParser &options);
ExitCode verify(const QString &source, const QCommandLineParser &options);

/// Whether it is 64 hexadecimal digits in lower case.
bool isSha256(const QByteArray &text);

/// Prints one line as UTF-8. Control characters become "?": a catalogue must not steer the terminal.
void printLine(const QString &line, std::FILE *file = stdout);

/// Prints rows of texts with columns of even width; the first row is the header.
void printTable(const QList<QStringList> &rows);

/// The words in the order of the alphabet.
QStringList sorted(const QStringSet &words);

/// The same, joined with commas.
QString joined(const QStringSet &words);

/// The words of a list that is separated by commas.
QStringList listOf(const QString &text);

} // namespace qv
