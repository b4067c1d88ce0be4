#pragma once

#include "SpreadsheetApp.h"

#include <memory>

namespace stellwyn::collection {

// The office this build can reach: LibreOffice Calc through its UNO bridge where the build had
// the office's SDK, otherwise none (attaching then finds nothing and says so).
std::unique_ptr<SpreadsheetApp> makeSpreadsheetApp();

} // namespace stellwyn::collection
