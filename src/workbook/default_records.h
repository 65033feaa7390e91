// The default records: the fixed bytes of which a new workbook and a new sheet consist, and the one function
// that serves them.
//
// A record is asked for by a key and a variant. The key is mostly the low part of the record's type, but it
// is a key: 30, 62, 97 and 147 give the types 0x041E, 0x023E, 0x0161 and 0x0293, and 176 is no record at all
// but the payload of the one before it. The bytes are part of the file format that this library writes, down
// to values that look accidental, and differ between the two generations; they are literal tables in
// default_records.cpp.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int16_t kKeyEof = 10;
constexpr int16_t kKeyCalcCount = 12;
constexpr int16_t kKeyCalcMode = 13;
constexpr int16_t kKeyPrecision = 14;
constexpr int16_t kKeyRefMode = 15;
constexpr int16_t kKeyDelta = 16;
constexpr int16_t kKeyIteration = 17;
constexpr int16_t kKeyProtect = 18;
constexpr int16_t kKeyPassword = 19;
constexpr int16_t kKeyHeader = 20;
constexpr int16_t kKeyFooter = 21;
constexpr int16_t kKeyWindowProtect = 25;
constexpr int16_t kKeySelection = 29;
constexpr int16_t kKeyDateMode1904 = 34;
constexpr int16_t kKeyPrintHeaders = 42;
constexpr int16_t kKeyPrintGridlines = 43;
constexpr int16_t kKeyWindow1 = 61;
constexpr int16_t kKeyWindow2 = 62;
constexpr int16_t kKeyBackup = 64;
constexpr int16_t kKeyCodepage = 66;
constexpr int16_t kKeySaveRecalc = 95;
constexpr int16_t kKeyDsf = 97;
constexpr int16_t kKeyGuts = 128;
constexpr int16_t kKeyWsBool = 129;
constexpr int16_t kKeyGridSet = 130;
constexpr int16_t kKeyHCenter = 131;
constexpr int16_t kKeyVCenter = 132;
constexpr int16_t kKeyCountry = 140;
constexpr int16_t kKeyHideObj = 141;
constexpr int16_t kKeyFnGroupCount = 156;
constexpr int16_t kKeySetup = 161;
constexpr int16_t kKeyToolbar00A4 = 164;
constexpr int16_t kKeyToolbarHdr = 191;
constexpr int16_t kKeyToolbarEnd = 192;
constexpr int16_t kKeyMms = 193;
constexpr int16_t kKeyBookBool = 218;
constexpr int16_t kKeyInterfaceHdr = 225;
constexpr int16_t kKeyInterfaceEnd = 226;
constexpr int16_t kKeyTabId = 317;
constexpr int16_t kKeyUsesElfs = 352;
constexpr int16_t kKeyProt4Rev = 431;
constexpr int16_t kKeyRefreshAll = 439;
constexpr int16_t kKeyProt4RevPass = 444;
constexpr int16_t kKeyIndex = 523;
constexpr int16_t kKeyFormat = 30;  // variants 0 to 8
constexpr int16_t kKeyFont = 49;    // variants 0 to 4, in BIFF8 0 to 3
constexpr int16_t kKeyWriteAccess = 92;
constexpr int16_t kKeyBoundSheet = 133;        // never served, though the empty book asks for it
constexpr int16_t kKeyPalette = 146;           // any variant
constexpr int16_t kKeyStyle = 147;             // variants 0 to 5
constexpr int16_t kKeyInterfacePayload = 176;  // BIFF8 only: the 2 bytes that INTERFACEHDR promises
constexpr int16_t kKeyXf = 224;                // variants 0 to 21

// Makes the default record of `key` in the generation of BiffVersion. Only the low 8 bits of `variant` count.
// Returns a pool block of exactly the record's size, the caller's to release, and stores that size in *size.
// Returns 0, with *size and the pool untouched, for a key or variant that the generation does not serve, when
// no pool block is free, and while BiffVersion is neither 5 nor 6.
uint32_t MakeDefaultRecord(uint32_t* size, int16_t key, uint32_t variant);

}  // namespace tolvenar
