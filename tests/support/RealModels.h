#pragma once

#include "support/TestData.h"

#include <IfcImport.h>

#include <gtest/gtest.h>

namespace TestSupport {

/// Calls check(buffer) for some imported real models; skips the test where there are none.
template <class Check>
void CheckRealModels([[maybe_unused]] Check const& check) {
#if defined(QUORLAN_HAS_IFC)
    auto const data = FindTestData();
    if (!data) GTEST_SKIP() << kNoTestData;
    for (char const* const name : {"AC20-FZK-Haus.ifc", "Duplex_A_20110907.ifc", "IfcOpenHouse_IFC4.ifc"}) {
        SCOPED_TRACE(name);
        auto const result = QuorlanProgram::Import::ImportIfc(ReadText(*data / name));
        ASSERT_EQ(result.error, "");
        check(result.model);
    }
#else
    GTEST_SKIP() << "the import of IFC files is not built";
#endif
}

}  // namespace TestSupport
