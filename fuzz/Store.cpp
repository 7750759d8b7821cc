// Configuration stores: a value that is set is read back, and all others stay as they are.
#include "Fuzz.h"
#include "store/StoreEdit.h"

namespace {

hostlayer::StoreContent contentOf(const std::string& text, bool& isStore) {
    hostlayer::StoreContent content;
    std::string problem;
    isStore = hostlayer::parseStore(text, content, problem);
    fuzz::require(isStore == problem.empty());
    return content;
}

}  // namespace

// The store, then the key, the name and the text of a value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto parts = fuzz::partsOf(fuzz::textOf(data, size));
    parts.resize(4);
    const std::string text(parts[0]), key(parts[1]), name(parts[2]), value(parts[3]);
    bool isStore = false;
    hostlayer::StoreContent before = contentOf(text, isStore);
    std::string edited, problem;
    if (!isStore || key.empty() || name.empty() ||
        !hostlayer::editStore(text, {"Instance001", key}, name, value, edited, problem))
        return 0;
    const hostlayer::StoreContent after = contentOf(edited, isStore);
    fuzz::require(isStore);
    before.instances["Instance001"][key].insert_or_assign(name, value);
    fuzz::require(before.instances == after.instances && before.settings == after.settings &&
                  before.programs == after.programs);
    return 0;
}
