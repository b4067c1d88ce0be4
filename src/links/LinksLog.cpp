#include "links/LinksLog.h"

namespace stellwyn::links {
Q_LOGGING_CATEGORY(lcLinks, "stellwyn.links")
} // namespace stellwyn::links
