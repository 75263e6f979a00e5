#include "kit/kit_environment.h"

#include <unicode/putil.h>

// Some tests make allocations fail; the sanitizer then has to return null, as the heap does.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace ventrix {
namespace {

class KitEnvironment : public testing::Environment {
  public:
    void SetUp() override {
        u_setDataDirectory(VENTRIX_ICU_DATA);
        Q_SetEncoding("UTF-8");
    }
};

[[maybe_unused]] const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new KitEnvironment);

}  // namespace

}  // namespace ventrix
