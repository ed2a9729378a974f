// What cameras say: the first line is a challenge, the second an address or a duration, the rest an answer. Nothing
// crashes or takes long, and what follows from it keeps its promises.
#include "Soap.h"
#include "Firmware.h"
#include "Fuzz.h"
#include "HttpDigest.h"

#include <algorithm>

using namespace qv;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    const QByteArray header = input.left(int(input.indexOf('\n')));
    const QByteArray rest = input.mid(header.size() + 1);
    const QString line = QString::fromUtf8(rest.left(int(rest.indexOf('\n'))));

    if (const auto challenge = readDigestChallenge(header))
        demand(!digestAuthorization(*challenge, "POST", "/", "a\"", "b", "c", 1).contains('\n'), "a header is a line");

    const int ms = msDuration(line, 1000);
    demand(ms >= -1 && ms <= 1000, "durations have a limit");
    for (const char *asked : { "http://camera:81/onvif", "https://camera" }) {
        const QUrl url = uploadAddress(line, QUrl(asked));
        demand(url.isEmpty() || (url.host() == "camera" && url.userInfo().isEmpty()), "files go to whom was asked");
        demand(url.isEmpty() || *(asked + 4) != 's' || url.scheme() == "https", "no address is weaker");
    }
    const QString version = firmwareVersion(line).toString();
    demand(!version.contains(',') && !version.contains(':'), "stores can keep versions");
    const QString shown = oneLine(line);
    demand(shown.size() <= 200 && !shown.contains('\n') && !shown.contains(QChar(0x202e)), "a line is harmless");

    const SoapAnswer answer = readSoap(rest);
    cameraTime(answer);
    demand(answer.isValid || !answer.isFault(), "only answers are faults");
    return 0;
}
