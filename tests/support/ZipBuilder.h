#pragma once

#include <QByteArray>
#include <QList>
#include <QtEndian>

#include <sys/stat.h>

/// One entry of an archive made by hand, where each part can lie.
struct ZipItem
{
    ZipItem(const QByteArray &name, const QByteArray &data = QByteArray(), unsigned mode = S_IFREG | 0644)
        : name(name), data(data), mode(mode)
    {
    }

    ZipItem &deflate() { return deflated = true, *this; }
    ZipItem &wide() { return zip64 = true, *this; }
    ZipItem &at(quint32 unixTime) { return time = unixTime, *this; }
    ZipItem &flag(quint16 bit) { return flags |= bit, *this; }
    ZipItem &by(quint16 system) { return madeBy = system, *this; } ///< 0: DOS, 3: Unix
    ZipItem &announce(quint64 bytes) { return announced = qint64(bytes), *this; }
    ZipItem &checksum(quint32 value) { return wrongSum = value, *this; }
    ZipItem &sameDataAs(int item) { return shared = item, *this; }

    QByteArray name, data;
    unsigned mode;
    bool deflated = false, zip64 = false;
    quint32 time = 0, wrongSum = 0;
    quint16 flags = 0x800, madeBy = 3; // names are UTF-8; Unix
    qint64 announced = -1;
    int shared = -1;
};

/// Writes ZIP archives byte for byte, sound ones and others.
class ZipBuilder
{
public:
    static QByteArray archive(const QList<ZipItem> &items)
    {
        ZipBuilder zip;
        QList<QByteArray> directory;
        QList<quint64> offsets;
        for (const ZipItem &item : items) {
            offsets << (item.shared < 0 ? quint64(zip.bytes.size()) : offsets[item.shared]);
            const QByteArray packed = item.deflated ? rawDeflate(item.data) : item.data;
            const quint64 size = item.announced < 0 ? quint64(item.data.size()) : quint64(item.announced);
            const bool wide = item.zip64 || size > 0xfffffffe;
            const quint32 sum = item.wrongSum ? item.wrongSum : crc32(item.data);
            if (item.shared < 0) {
                zip.header(0x04034b50, item, wide, packed.size(), size, sum, 0);
                zip.bytes += packed;
            }
            ZipBuilder entry;
            entry.header(0x02014b50, item, wide, packed.size(), size, sum, offsets.last());
            directory << entry.bytes;
        }
        zip.finish(directory);
        return zip.bytes;
    }

private:
    static quint32 crc32(const QByteArray &data)
    {
        quint32 crc = ~0u;
        for (const char byte : data) {
            crc ^= quint8(byte);
            for (int bit = 0; bit < 8; ++bit)
                crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
        }
        return ~crc;
    }

    /// What qCompress() makes, without its length, the zlib header and the zlib checksum.
    static QByteArray rawDeflate(const QByteArray &data)
    {
        const QByteArray zlib = qCompress(data, 9);
        return zlib.mid(6, zlib.size() - 10);
    }

    template<class T>
    void put(T value)
    {
        value = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }

    void header(quint32 signature, const ZipItem &item, bool wide, quint64 packed, quint64 size, quint32 sum,
                quint64 offset)
    {
        const bool central = signature == 0x02014b50;
        const quint16 extraSize = quint16((wide ? 20 : 0) + (item.time ? 9 : 0));
        put(signature);
        if (central)
            put(quint16(item.madeBy << 8 | 30));
        put(quint16(wide ? 45 : 20)), put(item.flags), put(quint16(item.deflated ? 8 : 0));
        put(quint32(0x54215421)); // a date and time of DOS, in 2022
        put(sum), put(wide ? 0xffffffff : quint32(packed)), put(wide ? 0xffffffff : quint32(size));
        put(quint16(item.name.size())), put(extraSize);
        if (central)
            put(quint16(0)), put(quint16(0)), put(quint16(0)), put(quint32(item.mode << 16)), put(quint32(offset));
        bytes += item.name;
        if (wide)
            put(quint16(1)), put(quint16(16)), put(size), put(packed);
        if (item.time)
            put(quint16(0x5455)), put(quint16(5)), put(quint8(1)), put(item.time);
    }

    void finish(const QList<QByteArray> &directory)
    {
        const quint64 offset = quint64(bytes.size()), count = quint64(directory.size());
        bytes += directory.join();
        const quint64 end = quint64(bytes.size());
        if (count > 0xffff) {
            put(quint32(0x06064b50)), put(quint64(44)), put(quint16(45)), put(quint16(45)), put(quint64(0));
            put(count), put(count), put(end - offset), put(offset);
            put(quint32(0x07064b50)), put(quint32(0)), put(end), put(quint32(1));
        }
        const quint16 shortCount = quint16(qMin<quint64>(count, 0xffff));
        put(quint32(0x06054b50)), put(quint32(0)), put(shortCount), put(shortCount);
        put(quint32(end - offset)), put(quint32(offset)), put(quint16(0));
    }

    QByteArray bytes;
};
