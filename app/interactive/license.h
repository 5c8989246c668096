#ifndef KALMO_APP_INTERACTIVE_LICENSE_H
#define KALMO_APP_INTERACTIVE_LICENSE_H

#include "app/engine/data_extractor.h"

namespace kalmo {

/// Shows the payload's licence agreement. True when the operator accepted it. A payload without a licence
/// text, or with one that cannot be read, is a payload error, which has been shown.
bool bLicense(CDataExtractor* pclExtractor);

}  // namespace kalmo

#endif
