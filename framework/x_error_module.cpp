#include "framework/x_error_module.h"

#include <algorithm>

namespace kalmo {
namespace {

// 1 to 4 and 1000 are the archive's result codes as they come.
constexpr STErrorDef gstErrorDef[] = {
    {1, 4666, 0, eERRORLEVEL::Error},      // no such entry
    {2, 4668, 0, eERRORLEVEL::Error},      // destination not created
    {3, 4667, 0, eERRORLEVEL::Error},      // bad archive
    {4, 4664, 0, eERRORLEVEL::Error},      // entry not readable
    {9, 818, 0, eERRORLEVEL::Error},       // archive operation refused
    {105, 809, 0, eERRORLEVEL::Severe},    // internal error
    {1000, 810, 0, eERRORLEVEL::Severe},   // archive not open
    {1001, 4665, 0, eERRORLEVEL::Severe},  // file not installed
};

}  // namespace

const STErrorDef* STErrorModule::pstFind(unsigned unCode) const noexcept {
    const auto it = std::find_if(tabDef.begin(), tabDef.end(),
                                 [unCode](const STErrorDef& rst) { return rst.dwCode == unCode; });
    return it == tabDef.end() ? nullptr : &*it;
}

constinit const STErrorModule gstErrorModule604{604, L"kalmoinstall", L"25.0.98.0", gstErrorDef,
                                                &gstMyModuleInfo604};

}  // namespace kalmo
