// Which conversions there are.
#include <algorithm>
#include <array>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/convert_errors.h"

namespace sandbox {
namespace {

enum Family {
    kBytes,
    kNarrowText,
    kWideText,
    kGuid,
    kImage,
    kText,
    kNText,
    kNumber,
    kFloating,
    kMoney,
    kClock,
    kOldDate,
    kFamilies
};

Family familyOf(TypeId id) {
    switch (id) {
        case TypeId::Binary:
        case TypeId::VarBinary: return kBytes;
        case TypeId::Char:
        case TypeId::VarChar: return kNarrowText;
        case TypeId::NChar:
        case TypeId::NVarChar: return kWideText;
        case TypeId::UniqueIdentifier: return kGuid;
        case TypeId::Image: return kImage;
        case TypeId::Text: return kText;
        case TypeId::NText: return kNText;
        case TypeId::SmallMoney:
        case TypeId::Money: return kMoney;
        case TypeId::Real:
        case TypeId::Float: return kFloating;
        case TypeId::SmallDateTime:
        case TypeId::DateTime: return kOldDate;
        case TypeId::Time:
        case TypeId::Date:
        case TypeId::DateTime2: return kClock;
        default: return kNumber;
    }
}

// A row for each source, a column for each target, in Family's order. i implicit, e explicit, - never.
constexpr std::array<std::string_view, kFamilies> kMatrix = {
    //         bytes text wide guid image text ntext number float money clock olddate
    /*bytes*/ "iiiii--i-i-i",
    /*text*/ "eiiiiiiiiiii",
    /*wide*/ "eiii-iiiiiii",
    /*guid*/ "iiii--------",
    /*image*/ "i---i-------",
    /*text*/ "-ii--ii-----",
    /*ntext*/ "-ii--ii-----",
    /*number*/ "iii----iii-i",
    /*float*/ "iii----iii-i",
    /*money*/ "iee----iii-i",
    /*clock*/ "-ii-------ii",
    /*olddate*/ "eii----eeeii",
};

}  // namespace

Conversion conversionKind(const Type& from, const Type& to) {
    if (from.id == TypeId::Null || from.id == to.id) return Conversion::Implicit;
    // A time has no day and a date no clock: neither becomes the other.
    if ((from.id == TypeId::Date && to.id == TypeId::Time) || (from.id == TypeId::Time && to.id == TypeId::Date)) {
        return Conversion::None;
    }
    switch (kMatrix[familyOf(from.id)][familyOf(to.id)]) {
        case 'i': return Conversion::Implicit;
        case 'e': return Conversion::Explicit;
        default: return Conversion::None;
    }
}

void requireImplicitConversion(const Type& from, const Type& to) {
    switch (conversionKind(from, to)) {
        case Conversion::Implicit: return;
        case Conversion::Explicit: throw errors::implicitNotAllowed(from, to);
        case Conversion::None: throw errors::operandClash(from, to);
    }
}

void requireExplicitConversion(const Type& from, const Type& to) {
    if (conversionKind(from, to) == Conversion::None) throw errors::explicitNotAllowed(from, to);
}

}  // namespace sandbox
