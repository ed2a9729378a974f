// The one configuration of the process.
#include "NodeDB.h"

namespace qv {

NodeDB &NodeDB::getDB()
{
    static NodeDB db;
    return db;
}

} // namespace qv
