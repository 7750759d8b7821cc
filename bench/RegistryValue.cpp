// GetRegistryItemValue() against one stat() of the store's file.
#include <sys/stat.h>

#include "Bench.h"
#include "DVUtilities/commonFunc.h"
#include "Rows.h"

namespace bench {

void registryValue(Bench& bench) {
    const std::string store = bench.installation().storeFile();
    const std::size_t count = bench.scaled(1'000'000);
    const Step measured = [&] {
        std::string text(8192, '\0');
        std::string error;
        for (std::size_t i = 0; i < count; ++i)
            check(GetRegistryItemValue(nullptr, "Base", "sVERSION", nullptr, text.data(), error), error);
    };
    const Step reference = [&] {
        struct stat status {};
        for (std::size_t i = 0; i < count; ++i) check(stat(store.c_str(), &status) == 0, store);
    };
    bench.compare("registry-value", atMost(1.5), {measured, reference});
}

}  // namespace bench
