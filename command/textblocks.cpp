// Finding, creating, updating and removing measure text blocks.
#include "textblocks.h"

#include "eu16string.h"
#include "records.h"
#include "strings16.h"
#include "zemlopdk.h"

#include <climits>
#include <cstring>

namespace {

constexpr short kBlockHorizontal = -200;
constexpr unsigned long kRawTextRoom = 2000;  // units, terminator included

int16_t loadRecord(uint32_t tag, EDataID id, void* buffer, int32_t size) {
    return FX_LoadEData(tag, &id, buffer, &size, FXT_VERSION);
}

// The raw text of a block: the font command, then the caller's text as it is.
// A font without a name record is written with an empty name and 0.
void buildRawText(unsigned short* out, const unsigned short* text, const EOrvexFont& font) {
    EDTFontName name;
    std::memset(&name, 0, sizeof name);
    if (!loadRecord(kTagFontName, {static_cast<int16_t>(font.fontNumber), 0, 0}, &name,
                    sizeof name))
        std::memset(&name, 0, sizeof name);
    name.fontName[511] = 0;  // whatever the host left there
    const eu16string format("^font(%S,%d)^nfx(%d)^size(%d)");
    out[0] = 0;
    fx_sprintf(out, kRawTextRoom, format.data(), name.fontName, static_cast<int>(name.nameValue),
               static_cast<int>(font.effects), static_cast<int>(font.size));
    fx_strcat(out, kRawTextRoom, text);
}

bool containsText(const unsigned short* raw, const unsigned short* text) {
    const unsigned long n = fx_strlen(text);
    if (n == 0) return false;
    for (const unsigned short* p = raw; *p; ++p)
        if (fx_strncmp(p, text, n) == 0) return true;
    return false;
}

}  // namespace

int ExtractOrvexTag(unsigned int tag) { return static_cast<int16_t>(tag & 0xFFFF); }

short FindMeasTextBlock(const unsigned short* text, short staff, short measure, short horizontal,
                        short vertical) {
    for (int index = 0; index <= SHRT_MAX; ++index) {
        EDTMeasureText mt = {};
        if (!loadRecord(kTagMeasureText, {staff, measure, static_cast<int16_t>(index)}, &mt,
                        sizeof mt))
            return -1;
        if (mt.horizontal == horizontal && mt.vertical == vertical) return static_cast<short>(index);
        EDTTextBlock block = {};
        if (!loadRecord(kTagTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0}, &block,
                        sizeof block))
            return -1;
        // One unit more than the host may fill, so the text always ends.
        unsigned short raw[kRawTextReadLimit + 1] = {};
        if (!loadRecord(kTagRawText, {static_cast<int16_t>(block.rawTextNumber), 0, 0}, raw,
                        kRawTextReadLimit))
            return -1;
        if (containsText(raw, text)) return static_cast<short>(index);
    }
    return -1;
}

unsigned short CreateMeasTextBlock(const unsigned short* text, short staff, short measure,
                                   short vertical, EOrvexFont* font) {
    unsigned short raw[kRawTextRoom];
    buildRawText(raw, text, *font);

    EDataID rawId = {-1, 0, 0};
    if (!FX_CreateEData(kTagRawText, &rawId, raw, static_cast<int32_t>(fx_strlen(raw)), FXT_VERSION))
        return 0;

    EDTTextBlock block = {};
    block.rawTextNumber = static_cast<uint16_t>(rawId.first);
    block.word8 = 100;
    block.word14 = 0x1808;
    block.rawTextKind = static_cast<uint16_t>(ExtractOrvexTag(kTagRawText));
    EDataID blockId = {-1, -1, 0};
    if (!FX_CreateEData(kTagTextBlock, &blockId, &block, sizeof block, FXT_VERSION)) return 0;
    const auto blockNumber = static_cast<uint16_t>(blockId.first);

    EDTMeasureText mt = {};
    mt.blockNumber = blockNumber;
    mt.horizontal = kBlockHorizontal;
    mt.vertical = vertical;
    EDataID mtId = {staff, measure, -1};
    if (!FX_CreateEData(kTagMeasureText, &mtId, &mt, sizeof mt, FXT_VERSION)) return 0;

    // The measure learns that it holds text; a record that cannot be read is
    // never saved over.
    EDTMeasureSpec measureRecord = {};
    if (!loadRecord(kTagMeasureSpec, {measure, 0, 0}, &measureRecord, sizeof measureRecord)) return 0;
    measureRecord.textFlags |= kMeasureTextFlag;
    EDataID measureId = {measure, 0, 0};
    if (!FX_SaveEData(kTagMeasureSpec, &measureId, &measureRecord, sizeof measureRecord, FXT_VERSION)) return 0;
    return blockNumber;
}

short UpdateMeasTextBlock(const unsigned short* text, short staff, short measure, short index,
                          short vertical, EOrvexFont* font) {
    EDTMeasureText mt = {};
    if (!loadRecord(kTagMeasureText, {staff, measure, index}, &mt, sizeof mt)) return 0;
    mt.horizontal = kBlockHorizontal;
    mt.vertical = vertical;
    EDataID mtId = {staff, measure, index};
    if (!FX_SaveEData(kTagMeasureText, &mtId, &mt, sizeof mt, FXT_VERSION)) return 0;

    EDTTextBlock block = {};
    if (!loadRecord(kTagTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0}, &block,
                    sizeof block))
        return 0;
    unsigned short raw[kRawTextRoom];
    buildRawText(raw, text, *font);
    EDataID rawId = {static_cast<int16_t>(block.rawTextNumber), 0, 0};
    return FX_SaveEData(kTagRawText, &rawId, raw, static_cast<int32_t>(fx_strlen(raw)),
                        FXT_VERSION)
               ? 1
               : 0;
}

short RemoveMeasTextBlock(short staff, short measure, short index) {
    EDTMeasureText mt = {};
    if (!loadRecord(kTagMeasureText, {staff, measure, index}, &mt, sizeof mt)) return 0;
    EDTTextBlock block = {};
    if (!loadRecord(kTagTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0}, &block,
                    sizeof block))
        return 0;
    EDataID rawId = {static_cast<int16_t>(block.rawTextNumber), 0, 0};
    if (!FX_DeleteEData(kTagRawText, &rawId, FXT_VERSION)) return 0;
    EDataID blockId = {static_cast<int16_t>(mt.blockNumber), 0, 0};
    if (!FX_DeleteEData(kTagTextBlock, &blockId, FXT_VERSION)) return 0;
    EDataID mtId = {staff, measure, index};
    if (!FX_DeleteEData(kTagMeasureText, &mtId, FXT_VERSION)) return 0;
    return 1;
}
