// The host interface and the preference maps against lists written out by
// hand from the host interface documentation. Both sides of the host calls
// (our forwarders and the simulated host's exports) come from
// pdk/table/fxtable.def and the maps drive both load and save, so a wrong row
// there is mirrored everywhere else and only an independent list can see it.
#include "prefmaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> split(const std::string& s, char by) {
    std::vector<std::string> out;
    std::string item;
    std::istringstream in(s);
    while (std::getline(in, item, by))
        if (item.find_first_not_of(" \n") != std::string::npos) out.push_back(item);
    return out;
}

std::string trim(const std::string& s) {
    const size_t a = s.find_first_not_of(" \n"), b = s.find_last_not_of(" \n");
    return a == std::string::npos ? "" : s.substr(a, b - a + 1);
}

// Name, argument types before the stamp, ": " result, "= " value without the
// host function ("-" for none; " " and zeros are answers the forwarder makes).
const char kHostFunctions[] = R"(
FX_LoadEData int32 ptr ptr ptr : int16 = 0; FX_SaveEData int32 ptr ptr int32 : int16 = 0;
FX_CreateEData int32 ptr ptr int32 : int16 = 0; FX_DeleteEData int32 ptr : int16 = 0;
FX_PreviousEData int32 ptr ptr int32 : int16 = 0; FX_NextEData int32 ptr ptr int32 : int16 = 0;
FX_LoadTGF uint16 int16 int16 int16 int16 : ptr = null; FX_SaveTGF ptr : int16 = 0;
FX_FreeTGF ptr : ptr = null; FX_InsertEXENTRY ptr int16 int16 : int16 = 0;
FX_DeleteEXENTRY ptr int16 int16 : int16 = 0; FX_ReduceEntries ptr : - = -;
FX_GetTGFDuration ptr : int32 = 0; FX_StartZemloEdit ptr : int32 = 0;
FX_StartZemloEdit_UTF16 ptr : int32 = 0; FX_EndZemloEdit : int16 = 0; FX_CancelZemloEdit : - = -;
FX_StartMassEdit ptr int32 : ptr = null; FX_EndMassEdit ptr int16 : - = -;
FX_MassEditProgress ptr int16 int16 int16 int16 : int16 = 0;
FX_GetCurrentOrvexDocument : int16 = 0; FX_SetCurrentOrvexDocument int16 : int16 = 0;
FX_GetNextOrvexDocument int16 : int16 = 0; FX_NewOrvexDocument : int16 = 0;
FX_CloseOrvexDocument int16 : int16 = 0; FX_IsOrvexDocumentDirty int16 : int16 = 0;
FX_SetOrvexDocumentDirty int16 int16 : - = -;
FX_OpenDocument ptr int16 int16 int16 int16 int16 : int16 = 0;
FX_SaveDocument ptr int16 int16 : int16 = 0; FX_CloseCurrentDocumentWindow : int16 = 0;
FX_GetPrintSettings ptr : - = -; FX_PrintCurrentDocument ptr : int16 = 0;
FX_PrintDocument int16 ptr : int16 = 0; FX_PrintDocuments ptr int16 ptr : - = -;
FX_GetWindowCount : int16 = 0; FX_GetWindowInfoList ptr int16 : int16 = 0;
FX_GetCurrentWindowInfo ptr : int16 = 0; FX_GetCurrentWindow : ptr = null;
FX_SetCurrentWindow ptr : int16 = 0; FX_RedrawMusic ptr : - = -; FX_ScrollTo int16 int16 : - = -;
FX_UpdateLayout int16 int16 : - = -; FX_RebuildMenuSystem uint16 : - = -;
FX_ExecuteMenuItem int32 : int16 = 0; FX_EnableBusyDetection int16 : int16 = 0;
FX_IsCocoaFXDLG ptr : int16 = 0; FX_Dialog int16 ptr ptr int16 ptr : ptr = null;
FX_EndDialog ptr : - = -; FX_EnableDlgItem ptr int16 int16 : - = -;
FX_ShowHideDlgItem ptr int16 int16 : - = -; FX_SetDlgFocus ptr int16 : - = -;
FX_GetDlgCntlVal ptr int16 ptr int16 : int32 = 0; FX_SetDlgCntlVal ptr int16 ptr int32 : - = -;
FX_GetDlgCntlVal_UTF16 ptr int16 ptr int16 : int32 = 0;
FX_SetDlgCntlVal_UTF16 ptr int16 ptr int32 : - = -; FX_GetDlgCntl ptr int16 : ptr = null;
FX_GetDlgItemUser ptr int16 int16 ptr : - = -; FX_SetDlgItemUser ptr int16 int16 double : - = -;
FX_GetDlgItemVal ptr int16 int16 : int32 = 0; FX_SetDlgItemVal ptr int16 int16 int32 : - = -;
FX_GetDlgString ptr int16 ptr int16 : - = -; FX_GetDlgString_UTF16 ptr int16 ptr int16 : - = -;
FX_SetDlgString ptr int16 ptr : - = -; FX_SetDlgString_UTF16 ptr int16 ptr : - = -;
FX_SetTimer ptr int16 int32 : - = -; FX_KillTimer ptr int16 : - = -;
FX_AlertMessage ptr uint16 int32 ptr : int16 = 0;
FX_AlertMessage_UTF16 ptr uint16 int32 ptr : int16 = 0;
FX_FontDialog ptr ptr ptr int16 int16 : int16 = 0;
FX_FontDialog_UTF16 ptr ptr ptr int16 int16 : int16 = 0; FX_SymbolDialog ptr ptr ptr : int16 = 0;
FX_SymbolDialog_UTF32 ptr ptr ptr : int16 = 0; FX_SelectionDialog ptr int16 ptr ptr : int16 = 0;
FX_SelectExpressionDialog ptr ptr ptr ptr : int16 = 0; FX_SelectFileToOpen ptr int32 : int16 = 0;
FX_SelectFileToSave ptr int32 : int16 = 0; FX_SelectFolder ptr ptr ptr : int16 = 0;
FX_OpenHelpItem ptr : - = -; FX_OpenHelpItem_UTF16 ptr : - = -;
FX_FontNameToNum ptr : int16 = -1; FX_FontNameToNum_UTF16 ptr : int16 = -1;
FX_FontNumToName int16 ptr : int16 = 0; FX_FontNumToName_UTF16 int16 ptr int16 : int16 = 0;
FX_SetDefaultMusicFont int16 int16 uint16 : bool = false;
FX_DoesFontExistOnSystem ptr : bool = false;
FX_GetTextMetrics_UTF16 ptr ptr int32 double ptr : - = zeros;
FX_GetCurERegions ptr ptr ptr : int16 = 0; FX_SetCurERegionMac ptr : - = -;
FX_InsertMeasures int16 int16 int16 : int16 = 0; FX_DeleteMeasures int16 int16 int16 : int16 = 0;
FX_GetMeasureDuration int16 int16 : int32 = 0; FX_RebeamRegion ptr ptr : int16 = 0;
FX_RebarRegion ptr uint16 int16 int16 int16 : int16 = 0;
FX_GetKeySig int16 int16 int16 ptr : int16 = 0; FX_SelectNote ptr int16 : - = -;
FX_NoteMover ptr ptr int16 int16 int16 : - = -; FX_MassMoverMac ptr ptr : int16 = 0;
FX_CopyCutMusic ptr int16 : int32 = 0; FX_InsertMergeMusic int32 ptr bool : bool = false;
FX_DisposeZemloClipFileToken int32 : bool = false;
FX_AutoRehearsalInsert int16 int16 int16 ptr int16 : int16 = 0;
FX_AutoRehearsalInsert_UTF16 int16 int16 int16 ptr int16 : int16 = 0;
FX_GetMeasureNumberString int16 ptr int16 bool bool : bool = false;
FX_AnalyzeChord ptr ptr ptr : int16 = 0; FX_CheckZemlo2012Accidentals : - = -;
FX_GetEntryMetrics int16 int16 int32 ptr ptr int16 : int16 = 0;
FX_GetTGFEntryMetrics ptr ptr ptr int16 : int16 = 0;
FX_GetEntryMetrics2009a int16 int16 int32 ptr ptr int16 : int16 = 0;
FX_GetTGFEntryMetrics2009a ptr ptr ptr int16 : int16 = 0;
FX_GetEntryMetrics2014 int16 int16 int32 ptr ptr int16 : int16 = 0;
FX_GetTGFEntryMetrics2014 ptr ptr ptr int16 : int16 = 0;
FX_GetMeasureMetrics int16 int16 ptr int16 : int16 = 0; FX_FreeEntryMetrics ptr : - = -;
FX_FreeMeasureMetrics ptr : - = -; FX_GetCurrentPartID : int16 = -1;
FX_SetCurrentPartID int16 : - = -; FX_SetCurrentPartInView int16 : - = -;
FX_GetNextPartID int16 : int16 = -1; FX_GetPartName int16 : ptr = " ";
FX_GetPartName_UTF16 int16 : ptr = null; FX_CountParts : int32 = -1; FX_GetSMPParts ptr : - = -;
FX_AutoNumberedName_UTF16 int16 int16 ptr int16 bool : int16 = 0; FX_GetMaxLayers : int16 = 4;
FX_GetShowLayer int16 : int16 = 0; FX_Playback int16 int16 int16 uint16 : - = -;
FX_ListenToMidi ptr ptr : int16 = 0; FX_CopyMidi ptr ptr ptr : int16 = 0;
FX_PasteMidi ptr ptr int32 : int16 = 0; FX_NoteToMidi ptr int16 : int16 = 0;
FX_MidiNoteToString int16 ptr int16 int16 : - = -;
FX_MidiNoteToString_UTF16 int16 ptr int16 int16 : - = -; FX_StringToMidiNote ptr : int16 = 0;
FX_StringToMidiNote_UTF16 ptr : int16 = 0; FX_ProcessMidiData ptr : int32 = -1;
FX_ProcessMidiDataNoSplit ptr : int32 = -1; FX_DeleteMidiExpressions int16 int16 : - = -;
FX_DeleteTempoRecords int16 : - = -; FX_GetPlaybackSystem : int16 = -1;
FX_SetPlaybackSystem int16 bool : - = -; FX_SlotToInst int16 uint16 : int16 = 0;
FX_InstToSlot int16 uint16 : int16 = 0; FX_QueryK2Slot int32 int32 ptr ptr ptr int32 : int16 = 0;
FX_QueryK2Slot_UTF16 int32 int32 ptr ptr ptr int32 : int16 = 0;
FX_QueryPellixSlot int32 int32 ptr ptr ptr ptr ptr ptr ptr ptr ptr ptr int32 ptr int32 ptr int32 ptr int32 : int16 = 0;
FX_QueryPellixSlot_2010 int32 int32 ptr ptr ptr ptr ptr ptr int32 ptr int32 ptr int32 ptr int32 : int16 = 0;
FX_QueryPellixSlot_2010_UTF16 int32 int32 ptr ptr ptr ptr ptr ptr int32 ptr int32 ptr int32 ptr int32 : int16 = 0;
FX_GetPercMapRefData uint16 ptr ptr int16 : int16 = 0;
FX_GetPercMapRefData_UTF16 uint16 ptr ptr int16 : int16 = 0;
FX_CreatePercMapRefData ptr ptr : uint16 = 0; FX_CreatePercMapRefData_UTF16 ptr ptr : uint16 = 0;
FX_GetSyllable ptr int32 int32 ptr : ptr = null;
FX_GetSyllable_UTF16 ptr int32 int32 ptr : ptr = null;
FX_SyllableInfo int32 int16 int16 ptr int16 ptr ptr ptr ptr : int16 = 0;
FX_SyllableInfo_UTF16 int32 int16 int16 ptr int16 ptr ptr ptr ptr : int16 = 0;
FX_ParseCaretCommand ptr ptr int32 ptr : ptr = null;
FX_ParseCaretCommand_UTF16 ptr ptr int32 ptr : ptr = null; FX_GetTextEncoding : int32 = -2;
FX_GetZemloPathMac int32 ptr : int16 = 0; FX_GetGraphicPathMac ptr ptr ptr int32 : int16 = 0;
FX_GetDocumentPathMac int16 ptr : int16 = 0;
FX_CreateGraphic ptr int16 int32 ptr ptr int32 : int16 = 0;
FX_ExportSvgFromShape uint16 ptr ptr double : int16 = 0; FX_IsMachO : int16 = 0;
)";

// One row of fxtable.def as the table states it.
struct DefRow {
    const char *result, *params, *args, *kinds, *missing, *step;
};
const std::map<std::string, DefRow>& defRows() {
    static const std::map<std::string, DefRow> rows = {
#define FX_ENTRY(result, name, params, args, kinds, missing, step) \
    {#name, {#result, #params, #args, #kinds, #missing, #step}},
#include "fxtable.def"
#undef FX_ENTRY
    };
    return rows;
}

// A parameter list ("(int32_t a1, void* a2, uint32_t ver)") or a list of
// kinds ("(I32, PTR, VER)") in the documentation's words ("int32 ptr"); the
// stamp must end it. The names of a parameter list go to *names.
std::string wordsOf(const std::string& list, std::string* names = nullptr) {
    static const std::map<std::string, std::string> words = {
        {"int16_t", "int16"}, {"uint16_t", "uint16"}, {"int32_t", "int32"}, {"void*", "ptr"},
        {"bool", "bool"},     {"double", "double"},   {"I16", "int16"},     {"U16", "uint16"},
        {"I32", "int32"},     {"PTR", "ptr"},         {"BOOL", "bool"},     {"DBL", "double"},
        {"VOID", "-"},        {"uint32_t", "stamp"},  {"VER", "stamp"}};
    std::string out;
    const auto parts = split(list.substr(1, list.size() - 2), ',');
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string p = trim(parts[i]);
        const size_t cut = names ? p.find_last_of(' ') : p.size();
        if (names) *names += (i ? ", " : "") + p.substr(cut + 1);
        const std::string w = words.count(p.substr(0, cut)) ? words.at(p.substr(0, cut)) : "?" + p;
        if ((w == "stamp") != (i + 1 == parts.size())) return "not the stamp last";
        if (w != "stamp") out += (out.empty() ? "" : " ") + w;
    }
    return out;
}

TEST(Interface, EveryHostFunctionAsDocumented) {
    std::map<std::string, DefRow> left = defRows();
    size_t listed = 0;
    for (const std::string& entry : split(kHostFunctions, ';')) {
        const std::string e = trim(entry);
        const size_t colon = e.find(" : "), eq = e.find(" = ");
        const std::string head = e.substr(0, colon), result = e.substr(colon + 3, eq - colon - 3),
                          missing = e.substr(eq + 3);
        const size_t space = head.find(' ');
        const std::string name = head.substr(0, space);
        const std::string args = space == std::string::npos ? "" : head.substr(space + 1);
        ++listed;
        SCOPED_TRACE(name);
        auto it = left.find(name);
        ASSERT_NE(it, left.end()) << "not in the table";
        const DefRow& r = it->second;
        std::string names;
        EXPECT_EQ(wordsOf(r.params, &names), args) << "parameters";
        EXPECT_EQ("(" + names + ")", std::string(r.args)) << "arguments passed on";
        EXPECT_EQ(wordsOf(r.kinds), args) << "kinds";
        EXPECT_EQ(wordsOf("(" + std::string(r.result) + ", VER)"), result) << "result";
        const bool answered = missing == "\" \"" || missing == "zeros";
        const std::string zero = missing == "null" || missing == "false" || missing == "-" ||
                                         missing == "zeros" ? "0" : missing;
        EXPECT_EQ(std::string(r.missing), missing == "\" \"" ? "FX_BLANK_PART_NAME" : zero)
            << "value without the host function";
        if (answered) {
            EXPECT_STREQ(r.step, "STEP") << "the forwarder makes its answer by hand";
        }
        left.erase(it);
    }
    EXPECT_EQ(listed, 164u);
    EXPECT_STREQ(FxBlankPartName, " ");
    for (const auto& extra : left) ADD_FAILURE() << extra.first << " is not a host function";
}

// Each composite's rows in table order: offset, element (identifier when not
// (-2, 0)), word; w4+w5 a 32-bit field built high word first; inverted and
// byte the conversions of their name; every other row copies.
struct MapRef {
    const char* name;
    int rows;
    const char* fields;
};
const MapRef kMaps[] = {
    {"pfDP", 36,
        "0: ot21 w3; 2: ot21 w5; 4: ot59 w3; 6: ot59 w4; 8: ot22 w1; 10: ot22 w2; 12: ot22 w3; "
        "14: ot67 w3; 16: ot67 w4; 18: ot68 w4+w5; 22: ot20 w1; 24: ot20 w2; 26: ot13 w3; "
        "28: ot19 w0; 30: ot19 w1; 32: ot68 w0; 34: ot21 w1; 36: ot68 w1; 38: ot21 w0; "
        "40: ot27 w5; 42: ot18 w0; 44: ot18 w2; 46: ot18 w1; 48: ot21 w4; 50: ot39 w0; "
        "52: ot39 w1; 54: ot65 w0+w1; 58: ot67 w1; 60: ot18 w5; 62: ot67 w0; 64: ot18 w3; "
        "66: ot18 w4; 68: ot14 w4; 70: ot14 w5; 74: ot01 w5; 72: ot77(-2,4) w0"},
    {"pfSI", 23,
        "0: ot67 w2; 2: ot58 w4; 4: ot68 w2+w3; 8: ot62 w4+w5; 12: ot03 w3; 14: ot23 w0; "
        "16: ot14 w2; 18: ot64 w1; 20: ot27 w3; 22: ot58 w5; 24: ot59 w0; 26: ot59 w1; "
        "28: ot01 w2; 30: ot59 w2; 32: ot01 w3; 34: ot97 w0+w1; 38: ot20 w4; 40: ot20 w5; "
        "42: ot03 w2; 44: ot21 w2; 46: ot64 w5; 48: ot97 w2+w3; 52: ot69 w0"},
    {"pfMS", 49,
        "0: ot36 w4; 2: ot03 w4; 4: ot03 w5; 6: ot09 w5; 8: ot36 w2; 10: ot36 w3; "
        "12: ot36 w1 inverted; 14: ot41 w0; 16: ot41 w1; 18: ot20 w0; 20: ot27 w1; 22: ot01 w0; "
        "24: ot13 w2; 26: ot15 w4; 28: ot27 w0; 30: ot27 w4; 32: ot44 w4; 34: ot27 w2; "
        "36: ot12 w2; 38: ot12 w3; 40: ot12 w1; 42: ot41(-2,2) w1; 44: ot23 w1; 46: ot19 w2; "
        "48: ot19 w3; 50: ot31 w5; 52: ot19 w4 byte; 54: ot19 w5 byte; 56: ot44 w3; 58: ot05 w4; "
        "60: ot05 w5; 62: ot13 w0; 64: ot41 w5; 66: ot12 w4; 68: ot01 w1; 70: ot93 w4; "
        "72: ot76 w4; 74: ot93 w2; 76: ot76 w3; 78: ot17 w5; 80: ot23 w4; 82: ot16 w5; "
        "84: ot62 w0+w1; 88: ot62 w2+w3; 92: ot41(-2,2) w0; 94: ot41 w2; 96: ot41(-2,1) w3+w4; "
        "100: ot76 w5; 102: otFI(10,0) w2"},
    {"pfRP", 20,
        "0: ot70 w0; 2: ot70 w1; 4: ot70 w2; 6: ot70 w3; 8: ot70 w4; 10: ot70 w5; 12: ot71 w0; "
        "14: ot71 w1; 16: ot71 w2; 18: ot71 w3; 20: ot71 w4; 22: ot71 w5; 24: ot05 w3; "
        "26: ot72 w0; 28: ot76 w2; 30: ot72 w1; 32: ot72 w2; 34: ot72 w3; 36: ot72 w4; 38: ot72 w5"},
    {"pfPB", 11,
        "0: ot65 w2+w3; 4: ot60 w2+w3; 8: ot65 w4+w5; 12: ot60 w4+w5; 16: ot61 w0+w1; "
        "20: ot61 w2+w3; 24: ot61 w4+w5; 28: ot60 w0+w1; 32: ot64 w2+w3; 36: ot45 w2+w3; "
        "40: ot45 w4+w5"},
    {"pfSS", 43,
        "0: ot92 w0; 2: ot92 w1; 4: ot92 w2; 6: ot92 w3; 8: otFI(11,0) w0; 10: otFI(11,0) w1; "
        "12: otFI(12,0) w4; 14: otFI(11,0) w4; 16: otFI(12,0) w0+w1; 20: otFI(12,0) w2+w3; "
        "24: otFI(11,0) w2; 26: otFI(11,0) w5; 28: ot12 w5 byte; 32: ot11 w5 byte; "
        "36: ot69 w4 byte; 40: ot69 w5 byte; 44: ot69 w2 byte; 48: ot69 w3 byte; 52: ot51 w5; "
        "54: ot53 w5; 56: ot51 w4; 58: ot53 w4; 60: ot50 w4; 62: ot53(-2,1) w0; "
        "64: ot53(-2,1) w1; 66: ot53(-2,1) w2; 68: ot53(-2,1) w3; 70: ot51 w0+w1; 74: ot51 w2+w3; "
        "78: ot53 w2; 80: ot53 w0; 82: ot53 w1; 84: ot93 w0+w1; 88: ot53 w3; 90: ot50 w5; "
        "92: ot50 w0; 94: ot50 w1; 96: ot50 w2; 98: ot50 w3; 100: ot97(-2,1) w0; "
        "102: ot97(-2,1) w1; 104: ot97(-2,1) w2; 106: ot97(-2,1) w3"},
    {"pfPL", 7,
        "0: ot13 w1; 2: ot39 w3; 4: ot36 w0; 6: ot36 w5; 8: ot37 w0; 10: ot37 w1; 12: ot37 w2"},
    {"pfEX", 25,
        "0: ot77(-2,4) w1; 2: ot77(-2,4) w2; 4: ot77(-2,4) w3; 6: ot77(-2,4) w4; "
        "8: ot77(-2,4) w5; 10: ot77(-2,5) w0; 12: ot77(-2,5) w1; 14: ot77(-2,5) w2; "
        "16: ot77(-2,5) w3; 18: ot77(-2,5) w4; 20: ot77(-2,5) w5; 22: ot77(-2,6) w0; "
        "24: ot77(-2,6) w1; 26: ot77(-2,6) w2; 28: ot77(-2,6) w3; 30: ot77(-2,6) w4; "
        "32: ot77(-2,6) w5; 34: ot77(-2,7) w0; 36: ot77(-2,7) w1; 38: ot77(-2,7) w2; "
        "40: ot77(-2,7) w3; 46: ot77(-2,7) w4; 48: ot77(-2,7) w5; 42: ot77(-2,8) w0; "
        "44: ot77(-2,8) w1"},
    {"pfPF", 22,
        "0: ot14 w0+w1; 4: ot15 w2+w3; 8: ot39 w2; 10: ot16 w0; 12: ot16 w1; 14: ot16 w2; "
        "16: ot16 w3; 18: ot02 w0; 20: ot02 w1; 22: ot02 w2; 24: ot02 w3; 26: ot17 w0; "
        "28: ot17 w1; 30: ot17 w3; 32: ot17 w2; 34: ot01 w4; 36: ot02 w4; 38: ot13 w5; "
        "40: ot13 w4; 42: ot02 w5; 44: ot03 w0; 46: ot03 w1"},
    {"pf05", 11,
        "0: ot69 w1; 2: ot20 w3; 4: ot39 w5; 6: ot38 w5; 8: ot39 w4; 10: ot23 w5; 12: ot56 w4; "
        "14: ot41(-2,2) w2; 16: ot41(-2,2) w3; 18: ot94 w4; 20: ot94(-2,2) w2"},
};

uint32_t prefTag(const char* name) {
    return 0x70660000u | static_cast<uint32_t>(static_cast<uint8_t>(name[2])) << 8 |
           static_cast<uint8_t>(name[3]);
}

// "36: ot41(-2,1) w3+w4" as a map row.
PREFERENCE_LOCATION_MAPRECORD rowOf(const std::string& field) {
    PREFERENCE_LOCATION_MAPRECORD r{};
    std::istringstream in(field);
    char c;
    std::string element, words, conversion;
    in >> r.offset >> c >> element >> words >> conversion;
    r.elementTag[0] = element[2];
    r.elementTag[1] = element[3];
    int first = -2, second = 0;
    if (element.size() > 4) std::sscanf(element.c_str() + 4, "(%d,%d)", &first, &second);
    r.number1 = static_cast<uint16_t>(first == -2 ? 0 : first);
    r.number2 = static_cast<int16_t>(second);
    r.word = static_cast<int16_t>(words[1] - '0');
    r.size = words.find('+') != std::string::npos ? 4 : 2;
    r.conversion = r.size == 4               ? MAPCONV_HIWORD_FIRST
                   : conversion == "inverted" ? MAPCONV_INVERT
                   : conversion == "byte"     ? MAPCONV_BYTE
                                              : MAPCONV_NONE;
    return r;
}

std::string show(const PREFERENCE_LOCATION_MAPRECORD& r) {
    std::ostringstream o;
    o << r.offset << ": ot" << r.elementTag[0] << r.elementTag[1] << "("
      << (r.number1 ? static_cast<int>(r.number1) : -2) << ","
      << r.number2 << ") w" << r.word << " size " << r.size << " conversion " << r.conversion;
    return o.str();
}

TEST(Interface, EveryCompositeMapRowAsDocumented) {
    size_t count = 0;
    prefComposites(&count);
    EXPECT_EQ(count, 10u);
    for (const MapRef& m : kMaps) {
        SCOPED_TRACE(m.name);
        const PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
        int16_t rows = 0;
        ASSERT_TRUE(mapPrefStruct(prefTag(m.name), 0, &map, &rows));
        const auto fields = split(m.fields, ';');
        ASSERT_EQ(fields.size(), static_cast<size_t>(m.rows));
        ASSERT_EQ(rows, m.rows);
        int32_t reach = 0;
        for (int16_t i = 0; i < rows; ++i) {
            const auto want = rowOf(fields[static_cast<size_t>(i)]);
            EXPECT_EQ(show(map[i]), show(want)) << "row " << i;
            reach = std::max<int32_t>(reach, want.offset + want.size);
        }
        // The size query answers how far the fields reach, so that a buffer
        // sized by it holds them all.
        EXPECT_EQ(fragmentStructExtent(map, rows), reach);
    }
}

// Array tags: characters, admitted numbers (any, n or low-high), element, count.
const char kArrays[] = R"(
    pfGD any ot79 1; pfGG any ot88 11; pfGb 1-4 ot98 1; pfGd any ot80 1; pfGs 1 ot91 1;
    pfMM any ot25 2; pfND any ot04 1; pfNd any ot66 1; pfPF 1 ot77 4; pfSC any ot52 2;
    pfSN 1-128 ot40 1; pfSP any ot94 3; pfSl 1-15 ot26 1; pfTC any ot86 5; pfTI any ot84 4;
    pfTX any ot78 9; pfTp any ot85 4; pfTs 1-9 ot90 1;
)";

TEST(Interface, EveryArrayPreferenceAsDocumented) {
    size_t count = 0;
    prefArrays(&count);
    const auto entries = split(kArrays, ';');
    EXPECT_EQ(count, entries.size());
    for (const std::string& e : entries) {
        std::istringstream in(e);
        std::string name, admitted, element;
        int elements = 0;
        in >> name >> admitted >> element >> elements;
        SCOPED_TRACE(name);
        const uint32_t tag = prefTag(name.c_str());
        const uint32_t elementTag = 0x6F740000u | static_cast<uint32_t>(element[2]) << 8 |
                                    static_cast<uint32_t>(element[3]);
        int low = -300, high = 300;
        const bool numbered = admitted != "any";
        if (numbered && std::sscanf(admitted.c_str(), "%d-%d", &low, &high) == 1) high = low;
        for (int n : {low - 1, low, high, high + 1}) {
            uint32_t got = 1;
            int16_t n16 = static_cast<int16_t>(n), elems = -1, start = -1;
            const bool in_range = !numbered || (n >= low && n <= high);
            EXPECT_EQ(mapPrefTag(tag, n16, &got, &elems, &start), in_range) << "number " << n;
            if (!in_range) continue;
            EXPECT_EQ(got, elementTag) << "number " << n;
            EXPECT_EQ(elems, elements) << "number " << n;
            EXPECT_EQ(start, numbered ? n - 1 : 0) << "number " << n;
        }
    }
}

}  // namespace
