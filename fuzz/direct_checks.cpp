#include "fuzz/fuzz_case.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "plugin/process_state.h"
#include "plugin/registration_forms.h"
#include "tests/unit/memory_picture.h"
#include "transforms/pixel_moves.h"
#include "transforms/skew_loops.h"
#include "transforms/skews.h"

namespace pixturn_fuzz {
namespace {

constexpr size_t kLongestDeclaration = 999;

// Every line's skew, from the first on.
struct Skews {
    double next;
    double step;
    double operator()() { return std::exchange(next, next + step); }
};

std::string CompareShears(const LoopCase& loops, MemoryPicture<PictureReader>& source, bool columns) {
    PictureReader& reader = source.editor;
    const int32_t width = reader.width + (columns ? 0 : loops.extraLength);
    const int32_t height = reader.height + (columns ? loops.extraLength : 0);
    std::mt19937 random(loops.seed);
    MemoryPicture<PictureWriter> fast(loops.destinationFormat, width, height, random);
    MemoryPicture<PictureWriter> plain(loops.destinationFormat, width, height, random);
    plain.bytes = fast.bytes;
    const Pixel background{loops.background[0], loops.background[1], loops.background[2], loops.background[3]};
    Skews skews{loops.firstSkew, loops.skewStep};
    const auto plainShear = columns ? VertSkew : HorizSkew;
    const int32_t lines = columns ? reader.width : reader.height;
    for (int32_t line = 0; line < lines; ++line) {
        const SkewStep step = SplitSkew(skews());
        plainShear(reader, plain.editor, line, step.offset, step.weight, background.r, background.g, background.b,
                   background.a);
    }
    skews = {loops.firstSkew, loops.skewStep};
    if (columns) ShearColumns(reader, fast.editor, lines, background, skews);
    else ShearRows(reader, fast.editor, lines, background, skews);
    if (fast.bytes == plain.bytes) return {};
    return columns ? "ShearColumns differs from VertSkew" : "ShearRows differs from HorizSkew";
}

// A class record of that many methods, setters and properties, declared alike.
struct Record {
    std::vector<REALmethodDefinition> methods;
    std::vector<REALproperty> properties;
    std::vector<REALproperty> sharedProperties;
    REALclassDefinition definition{};
};

Record RecordFor(const RecordCase& records) {
    Record record;
    const auto function = reinterpret_cast<REALproc>(&std::abort);
    for (int i = 0; i < records.methods; ++i) {
        const bool setter = records.setters >> i & 1;
        record.methods.push_back({function, setter ? function : nullptr, records.declaration.c_str(), kFlagNewStyle,
                                  0, nullptr});
    }
    REALproperty property{};
    property.name = "Property";
    property.flags = kFlagNewStyleHigh;
    record.properties.assign(size_t(records.properties), property);
    record.sharedProperties = record.properties;
    record.definition.version = 13;
    record.definition.name = records.className.c_str();
    record.definition.methods = record.methods.empty() ? nullptr : record.methods.data();
    record.definition.methodCount = records.methods;
    record.definition.properties = record.properties.empty() ? nullptr : record.properties.data();
    record.definition.propertyCount = records.properties;
    record.definition.sharedProperties = record.sharedProperties.empty() ? nullptr : record.sharedProperties.data();
    record.definition.sharedPropertyCount = records.properties;
    return record;
}

}  // namespace

std::string CompareLoopsWithDefinitions(const LoopCase& loops) {
    std::mt19937 random(loops.seed);
    MemoryPicture<PictureReader> source(loops.sourceFormat, loops.width, loops.height, random);
    const auto mapping = static_cast<PixelMapping>(loops.mapping);
    const bool exchanged = mapping == PixelMapping::QuarterAnticlockwise || mapping == PixelMapping::QuarterClockwise;
    const int32_t width = exchanged ? loops.height : loops.width;
    const int32_t height = exchanged ? loops.width : loops.height;
    MemoryPicture<PictureWriter> fast(loops.destinationFormat, width, height, random);
    MemoryPicture<PictureWriter> plain(loops.destinationFormat, width, height, random);
    plain.bytes = fast.bytes;
    MovePixels(source.editor, fast.editor, mapping);
    MovePixelsOneByOne(source.editor, plain.editor, mapping);
    if (fast.bytes != plain.bytes) return "MovePixels differs from MovePixelsOneByOne";
    for (const bool columns : {false, true})
        if (std::string difference = CompareShears(loops, source, columns); !difference.empty()) return difference;
    return {};
}

std::string ReshapeRecords(const RecordCase& records) {
    for (char* rewritten : {AddClassParameter(records.declaration.c_str(), records.className.c_str()),
                            AssignmentDeclaration(records.declaration.c_str(), records.className.c_str())}) {
        const size_t length = rewritten != nullptr ? std::strlen(rewritten) : 0;
        std::free(rewritten);
        if (length > kLongestDeclaration) return "a rewritten declaration of " + std::to_string(length) + " characters";
    }

    Record module = RecordFor(records);
    TranslateDefinitionFlags(module.definition, 2013.04);
    FreeExtensionModule(BuildExtensionModule(module.definition, "Part", 13));

    Record older = RecordFor(records);
    if (ConvertToOlderLayout(older.definition)) FreeOlderLayoutTables(older.definition);
    return {};
}

}  // namespace pixturn_fuzz
