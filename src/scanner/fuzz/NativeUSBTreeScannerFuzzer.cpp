// Builds a registry tree from the fuzzer's bytes and scans it. Trees from saved
// snapshots reach the scanner with whatever names, kinds and nesting the file
// held, so every shape of node has to pass without a crash or a hang.

#include "ids/IDsNameResolver.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "scanner/PropertyReaders.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace {

using namespace korvane;

class ByteReader {
  public:
    ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool isDone() const { return position_ >= size_; }
    std::uint8_t byte() { return isDone() ? 0 : data_[position_++]; }
    std::string text() {
        const std::size_t length = byte() % 24;
        std::string result;
        for (std::size_t i = 0; i < length && !isDone(); ++i) {
            result.push_back(static_cast<char>(byte()));
        }
        return result;
    }
    ByteBuffer bytes() {
        const std::string raw = text();
        return ByteBuffer(raw.begin(), raw.end());
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t position_ = 0;
};

const char* const interestingNames[] = {"HS01",
                                        "SS02@1",
                                        "USR1",
                                        "PRT3",
                                        "hsp4",
                                        "XHC1@14",
                                        "Bluetooth",
                                        "iPhone",
                                        "",
                                        "IOUSBHostDevice",
                                        ("\xC3\x9F"
                                         "01"),
                                        "HS01\n@2"};
const char* const interestingClasses[] = {
    "IOPCIDevice",     "AppleIntelCNLUSBXHCI", "AppleUSB20XHCIPort", "AppleUSBHostPort",
    "IOUSBHostDevice", "IOUSBHostInterface",   "IOService",          ""};
const char* const interestingKeys[] = {"class-code",
                                       "vendor-id",
                                       "device-id",
                                       "compatible",
                                       "IOName",
                                       "name",
                                       "ports",
                                       "port",
                                       "usb-port-number",
                                       "UsbConnector",
                                       "portType",
                                       "idVendor",
                                       "idProduct",
                                       "locationID",
                                       "USB Product Name",
                                       "location",
                                       "BluetoothTransport",
                                       "IOClass",
                                       "IOProviderClass",
                                       "acpi-path"};

template <std::size_t N> const char* pick(const char* const (&table)[N], ByteReader& in) {
    return table[in.byte() % N];
}

PropertyValue value(ByteReader& in, int depth) {
    switch (in.byte() % 7) {
    case 0:
        return in.text();
    case 1:
        return in.bytes();
    case 2: {
        std::uint64_t number = 0;
        for (int i = 0; i < 8; ++i) {
            number = (number << 8) | in.byte();
        }
        return static_cast<std::int64_t>(number);
    }
    case 3:
        return in.byte() % 2 ? PropertyValue(ByteBuffer{0x30, 0x03, 0x0C, 0x00})
                             : PropertyValue(pick(interestingNames, in));
    case 4: {
        PropertyArray array;
        for (int i = in.byte() % 4; i > 0 && depth < 4; --i) {
            array.push_back(value(in, depth + 1));
        }
        return array;
    }
    case 5: {
        PropertyDictionary dictionary;
        for (int i = in.byte() % 4; i > 0 && depth < 4; --i) {
            dictionary[pick(interestingNames, in)] = value(in, depth + 1);
        }
        return dictionary;
    }
    default: {
        PropertyKeyedList keyed;
        for (int i = in.byte() % 3; i > 0 && depth < 4; --i) {
            keyed.emplace_back(value(in, depth + 1), value(in, depth + 1));
        }
        return keyed;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static IDsNameResolver names(
        IDsDatabaseLocations{std::filesystem::temp_directory_path() / "korvane-fuzz-registry-tree",
                             std::filesystem::temp_directory_path() / "korvane-fuzz-registry-tree"});
    ByteReader in(data, size);
    NativeUSBNode root("Root", "", "IORegistryEntry", {}, nullptr);
    NativeUSBNode* current = &root;
    for (int nodes = 0; !in.isDone() && nodes < 4000; ++nodes) {
        switch (in.byte() % 4) {
        case 0: {
            PropertyDictionary properties;
            for (int i = in.byte() % 4; i > 0; --i) {
                properties[pick(interestingKeys, in)] = value(in, 0);
            }
            const std::string className = pick(interestingClasses, in);
            const std::string name = in.byte() % 2 ? std::string(pick(interestingNames, in)) : in.text();
            current =
                &current->addChild(name, registryLocation(properties), className, std::move(properties));
            break;
        }
        case 1:
            if (current->parent != nullptr) {
                current = current->parent;
            }
            break;
        case 2:
            current->properties.editableDictionary()[pick(interestingKeys, in)] = value(in, 0);
            break;
        default:
            (void)registryName(current->properties, current->className);
            break;
        }
    }
    struct NoSource : RegistrySource {
        std::unique_ptr<NativeUSBNode> copyRoot() const override { return nullptr; }
    } source;
    (void)NativeUSBTreeScanner(source, names).scanTree(root);
    return 0;
}
