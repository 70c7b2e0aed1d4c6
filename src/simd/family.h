// A family's tables: which there are, and the one to use. To be included by the file that holds NORV_FAMILY(family,
// Name), which defines what the family's contract declares:
//
//   struct NameKernels { VectorLevel level; ... };
//   const NameKernels& NameKernelsOf(VectorLevel level);   the table of a level at or below the machine's
//   const NameKernels& ActiveNameKernels();                the table of the level in use
#pragma once

#include "simd/levels.h"

namespace norv {

// All families of the program, for the test that each level's table was compiled for that level.
struct Family {
  Family(const char* familyName, VectorLevel (*compiledLevel)(VectorLevel))
      : name(familyName), levelOf(compiledLevel), next(first) {
    first = this;
  }

  const char* name;
  VectorLevel (*levelOf)(VectorLevel level);  // what the table of a level says of itself
  const Family* next;
  static inline constinit const Family* first = nullptr;
};

}  // namespace norv

#define NORV_FAMILY_TABLE(level, bytes, macro, test, family, Name) \
  namespace family##_##level {                                     \
    extern const Name##Kernels kTable;                             \
  }
#define NORV_FAMILY_ADDRESS(level, bytes, macro, test, family, Name) &family##_##level::kTable,

#define NORV_FAMILY(family, Name)                                                                       \
  NORV_LEVELS(NORV_FAMILY_TABLE, family, Name)                                                          \
  const Name##Kernels& Name##KernelsOf(VectorLevel level) {                                             \
    static constexpr const Name##Kernels* kTables[] = {NORV_LEVELS(NORV_FAMILY_ADDRESS, family, Name)}; \
    return *kTables[static_cast<int>(level)];                                                           \
  }                                                                                                     \
  const Name##Kernels& Active##Name##Kernels() { return Name##KernelsOf(ActiveLevel()); }               \
  static const Family kFamily(#family, [](VectorLevel level) { return Name##KernelsOf(level).level; })
