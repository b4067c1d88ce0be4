#pragma once

#include <QString>

namespace stellwyn::core {

// The connection text that names the data file of a folder, as dataconn and cfgconn hold it.
// The provider part is kept so the text reads as it always did; only the path after
// "Data Source=" matters to our store.
QString connectionText(const QString& folder);

// The path after "Data Source=", trimmed and cut at a following ';'. A text without that key
// is taken as a path already.
QString dataSourceOf(const QString& connText);

} // namespace stellwyn::core
