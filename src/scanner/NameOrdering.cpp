#include "base/ASCIIText.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>

namespace korvane {

namespace {

// Configured fully before it is published: compare() on a shared collator is
// thread-safe in ICU, setAttribute() is not.
std::unique_ptr<icu::Collator> makeCollator() {
    // The C and POSIX locales collate in code point order, upper case first,
    // which is no order a person reads names in; they stand for "no
    // preference", so the root collation serves them.
    icu::Locale locale = icu::Locale::getDefault();
    if (std::string_view(locale.getVariant()) == "POSIX" || std::string_view(locale.getLanguage()).empty() ||
        std::string_view(locale.getLanguage()) == "c") {
        locale = icu::Locale::getRoot();
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status) || !collator) {
        return nullptr;
    }
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    collator->setStrength(icu::Collator::SECONDARY);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return collator;
}

const icu::Collator* sharedCollator() {
    static const std::unique_ptr<icu::Collator> collator = makeCollator();
    return collator.get();
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Used only when ICU has no collation data: ASCII case folded, digit runs by value.
int fallbackCompare(std::string_view a, std::string_view b) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            std::size_t ei = i;
            std::size_t ej = j;
            while (ei < a.size() && a[ei] == '0') {
                ++ei;
            }
            while (ej < b.size() && b[ej] == '0') {
                ++ej;
            }
            std::size_t si = ei;
            std::size_t sj = ej;
            while (ei < a.size() && isDigit(a[ei])) {
                ++ei;
            }
            while (ej < b.size() && isDigit(b[ej])) {
                ++ej;
            }
            if (ei - si != ej - sj) {
                return ei - si < ej - sj ? -1 : 1;
            }
            if (const int c = a.substr(si, ei - si).compare(b.substr(sj, ej - sj)); c != 0) {
                return c < 0 ? -1 : 1;
            }
            i = ei;
            j = ej;
            continue;
        }
        const auto la = static_cast<unsigned char>(asciiLowercased(a[i]));
        const auto lb = static_cast<unsigned char>(asciiLowercased(b[j]));
        if (la != lb) {
            return la < lb ? -1 : 1;
        }
        ++i;
        ++j;
    }
    if (i < a.size()) {
        return 1;
    }
    return j < b.size() ? -1 : 0;
}

} // namespace

bool localizedStandardLess(std::string_view a, std::string_view b) {
    constexpr auto maximum = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    int order = 0;
    if (const icu::Collator* collator = sharedCollator();
        collator && a.size() <= maximum && b.size() <= maximum) {
        UErrorCode status = U_ZERO_ERROR;
        const UCollationResult result =
            collator->compareUTF8(icu::StringPiece(a.data(), static_cast<std::int32_t>(a.size())),
                                  icu::StringPiece(b.data(), static_cast<std::int32_t>(b.size())), status);
        order = U_FAILURE(status) ? fallbackCompare(a, b) : static_cast<int>(result);
    } else {
        order = fallbackCompare(a, b);
    }
    if (order != 0) {
        return order < 0;
    }
    // Texts the collation calls equal ("hs1" and "HS1") still need one fixed
    // order, or sorts of the same data would differ from run to run.
    return a < b;
}

void sortPortsByNumberThenName(std::vector<USBPortMap>& ports) {
    std::stable_sort(ports.begin(), ports.end(), [](const USBPortMap& a, const USBPortMap& b) {
        const std::int64_t numberA = portNumber(a.portData).value_or(0);
        const std::int64_t numberB = portNumber(b.portData).value_or(0);
        if (numberA != numberB) {
            return numberA < numberB;
        }
        return localizedStandardLess(a.name, b.name);
    });
}

void sortControllersByIDsThenLocation(std::vector<USBControllerMap>& controllers) {
    std::stable_sort(controllers.begin(), controllers.end(),
                     [](const USBControllerMap& a, const USBControllerMap& b) {
                         if (a.vendorID != b.vendorID) {
                             return a.vendorID < b.vendorID;
                         }
                         if (a.deviceID != b.deviceID) {
                             return a.deviceID < b.deviceID;
                         }
                         if (a.location != b.location) {
                             return localizedStandardLess(a.location, b.location);
                         }
                         return localizedStandardLess(a.name, b.name);
                     });
}

} // namespace korvane
