// The exceptions' out-of-line members: one home for their type information, so that a catch works across libraries.
#include "ExceptionQt.h"
#include "IOException.h"
#include "ParseException.h"

namespace qv {

ExceptionQt::ExceptionQt(const QString &message) : text(message), utf8(message.toUtf8()) { }

ExceptionQt::~ExceptionQt() = default;
IOException::~IOException() = default;
ParseException::~ParseException() = default;

} // namespace qv
