#include "SpreadsheetFactory.h"

#ifdef STELLWYN_HAVE_UNO
#include "uno/CalcSpreadsheetApp.h"
#endif

namespace stellwyn::collection {

std::unique_ptr<SpreadsheetApp> makeSpreadsheetApp() {
#ifdef STELLWYN_HAVE_UNO
    return std::make_unique<CalcSpreadsheetApp>();
#else
    return std::make_unique<NoSpreadsheetApp>();
#endif
}

} // namespace stellwyn::collection
