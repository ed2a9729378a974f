// Takes out of a store's file what Qt must not see. Called by client and manager before they read or write; leaves the
// file as it is unless such a value is in it.
#include "Preferences.h"

#include "QtCompat.h"

#include <QDataStream>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>

#include <algorithm>

namespace qv {

namespace {

constexpr qint64 mostBytes = 64 * 1024 * 1024;
constexpr int mostLevels = 64;
constexpr quint32 everything = ~0U;

/// The place behind the backslash at @p at, and behind the end of line after that, which Qt takes for nothing.
int behindBackslash(const QByteArray &text, int at)
{
    const QByteArray next = text.mid(at + 1, 2);
    return at + (next == "\r\n" || next == "\n\r" ? 3 : 2);
}

/// Where the line that begins at @p begin ends for Qt, which reads on inside quotes and behind a backslash.
int endOfLine(const QByteArray &text, int begin)
{
    const bool isComment = text.at(begin) == ';';
    bool isQuoted = false;
    for (int i = begin; i < text.size(); ++i) {
        if ((text.at(i) == '\n' || text.at(i) == '\r') && !isQuoted)
            return i + 1;
        if (text.at(i) == '"' && !isComment)
            isQuoted = !isQuoted;
        if (text.at(i) == '\\' && !isComment)
            i = behindBackslash(text, i) - 1;
    }
    return int(text.size());
}

/// The bytes that a line of the file stands for, without its quotes, and without letters that no escape is made of.
QByteArray unescaped(const QByteArray &line)
{
    constexpr uint ofLatin1 = 0xff, ofQt = 0xffff; // Qt keeps 16 bits, and makes '?' of what Latin-1 lacks
    const QByteArray letters = "abfnrtv\"?'\\", codes = "\a\b\f\n\r\t\v\"?'\\", hex = "0123456789abcdefABCDEF";
    QByteArray bytes;
    for (int i = 0, next = 0; i < line.size(); i = next) {
        next = i + 1;
        if (line.at(i) != '\\') {
            if (line.at(i) != '"')
                bytes += line.at(i);
            continue;
        }
        const bool isHex = line.mid(next, 1) == "x";
        const QByteArray digits = isHex ? hex : hex.left(8);
        const int begin = next + int(isHex);
        for (next = begin; next < line.size() && digits.contains(line.at(next));)
            ++next;
        if (next > begin) {
            const uint code = line.mid(begin, next - begin).right(isHex ? 4 : 7).toUInt(nullptr, isHex ? 16 : 8) & ofQt;
            bytes += code > ofLatin1 ? '?' : char(code);
        } else {
            next = behindBackslash(line, i);
            if (next <= line.size() && letters.contains(line.at(i + 1)))
                bytes += codes.at(letters.indexOf(line.at(i + 1)));
        }
    }
    return bytes;
}

/// The bytes of @p line as Qt hands them to its stream. Not clear where it moves or drops some: then those of ASCII
/// alone, which is all that Qt itself writes behind a mark.
QByteArray inLatin1(const QByteArray &line, bool *isClear)
{
    *isClear = true;
    if (!storesAreUtf8)
        return line;
    const QString text = QString::fromUtf8(line);
    *isClear = !text.contains(QChar::ReplacementCharacter) && !text.contains(QChar::ByteOrderMark);
    if (*isClear)
        return text.toLatin1();
    QByteArray ascii;
    std::copy_if(line.begin(), line.end(), std::back_inserter(ascii), [](uchar c) { return c < 0x80; });
    return ascii;
}

void skip(QDataStream &in, quint32 bytes)
{
    in.skipRawData(int(qMin(qint64(bytes), in.device()->bytesAvailable())));
}

void skipText(QDataStream &in)
{
    quint32 size = 0;
    in >> size;
    skip(in, size);
}

/// The value in @p in has as many elements as it claims, and so have those in it, up to one of a type unknown here.
bool isWhole(QDataStream &in, int level = 0)
{
    enum Type : quint32 {
        Map = 8,
        List = 9,
        Text = 10,
        Texts = 11,
        Bytes = 12,
        OtherMap = 28,
        Arrays = 49,
        Points = 71
    };
    static const QMap<quint32, quint32> sizes { { 1, 1 }, { 2, 4 }, { 3, 4 }, { 4, 8 }, { 5, 8 }, { 6, 8 }, { 7, 2 } };

    quint32 type = 0, count = 0;
    in >> type;
    const bool isMap = type == Map || type == OtherMap, isList = type == List;
    const bool isTexts = type == Texts || type == Arrays;
    if (type == Text || type == Bytes) {
        skipText(in);
    } else if (isMap || isList || isTexts || type == Points) {
        in >> count;
        if (level > mostLevels || count > in.device()->bytesAvailable())
            return false;
    } else {
        skip(in, sizes.value(type, everything));
    }
    if (type == Points)
        skip(in, everything);
    for (; count > 0 && !in.atEnd(); --count) {
        if (isMap || isTexts)
            skipText(in);
        if ((isMap || isList) && !isWhole(in, level + 1))
            return false;
    }
    return true;
}

/// Qt writes date-times behind the second mark, and would read anything there.
bool isHarmless(const QByteArray &value)
{
    const QByteArray variant = "@Variant(", dateTime = "@DateTime(";
    constexpr quint32 dateTimeType = 16;
    if (!value.contains('@') && !value.contains('\\'))
        return true;
    bool isClear = true;
    const QByteArray bytes = unescaped(inLatin1(value, &isClear));
    for (auto at = bytes.indexOf('@'); at >= 0; at = bytes.indexOf('@', at + 1)) {
        const auto isMark = [&bytes, at](const QByteArray &mark) { return bytes.mid(at, mark.size()) == mark; };
        if (!isClear && (isMark(variant) || isMark(dateTime)))
            return false;
        const auto begin = std::min(bytes.size(), at + (isMark(variant) ? variant : dateTime).size());
        QDataStream in(QByteArray::fromRawData(bytes.constData() + begin, int(bytes.size() - begin)));
        if (isMark(variant) && !isWhole(in))
            return false;
        quint32 type = 0;
        in >> type;
        if (isMark(dateTime) && type != dateTimeType)
            return false;
    }
    return true;
}

} // namespace

bool Preferences::mend(QSettings &settings)
{
    const QFileInfo file(settings.fileName());
    if (settings.format() > QSettings::IniFormat || !file.isFile())
        return true;
    if (file.size() > mostBytes)
        return false;
    QFile stored(file.filePath());
    const QByteArray text = stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray();
    QByteArray kept;
    for (int begin = 0, end = 0; begin < text.size(); begin = end) {
        end = endOfLine(text, begin);
        const QByteArray line = text.mid(begin, end - begin);
        if (isHarmless(line.mid(line.indexOf('=') + 1)))
            kept += line;
    }
    if (kept.size() == text.size())
        return true;
    QSaveFile mended(file.filePath());
    if (!mended.open(QIODevice::WriteOnly) || mended.write(kept) != kept.size() || !mended.commit())
        return false;
    settings.sync();
    return true;
}

} // namespace qv
