#include "Encoders.h"

#include "Text.h"
#include "codecs/DNXRecords.h"
#include "codecs/DNXTables.h"
#include "framework/CxAVCodecRegistry.h"
#include "media/ToolError.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace {

constexpr size_t kCloseNames = 3;
// Of `CxEncoderInfo::flags`.
constexpr uint32_t kInterlacedFlag = 1;
constexpr uint32_t kAlphaFlag = 2;

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Least number of inserted, removed and changed characters that make one text of the other.
size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

/// How far a name is from what was asked for. Characters that the name has beyond a text that it contains
/// count little, so that "10-bit" finds its names.
size_t Distance(const std::string& wanted, const std::string& name) {
    const std::string a = LowerCase(wanted);
    const std::string b = LowerCase(name);
    return b.find(a) != std::string::npos ? 0 : EditDistance(a, b);
}

std::string CloseNames(const std::string& wanted) {
    std::vector<CxEncoderInfo> rows = RegistryEncoders();
    std::stable_sort(rows.begin(), rows.end(), [&](const CxEncoderInfo& a, const CxEncoderInfo& b) {
        return Distance(wanted, a.name) < Distance(wanted, b.name);
    });
    std::vector<std::string> names;
    for (size_t i = 0; i < std::min(rows.size(), kCloseNames); ++i)
        names.push_back("'" + rows[i].name + "'");
    return Join(names, ", ");
}

bool IsDNx(const CxEncoderInfo& row) { return row.fourCC == dnxHDCode || row.fourCC == dnxHRCode; }

} // namespace

std::vector<CxEncoderInfo> RegistryEncoders() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    return rows;
}

CxEncoderInfo FindEncoder(const std::string& name) {
    for (CxEncoderInfo& row : RegistryEncoders()) {
        if (row.name == name) return row;
    }
    throw ToolError(ExitStatus::Unsupported, "--codec " + name,
                    "no such encoder; close: " + CloseNames(name));
}

uint32_t CodecTag(const CxEncoderInfo& row) {
    // Many compressions of DNx have one code; all other back-ends know their encoders by it.
    return IsDNx(row) ? row.codecId : row.fourCC;
}

bool OffersAlpha(const CxEncoderInfo& row) { return (row.flags & kAlphaFlag) != 0; }

bool CodesRgb(const CxEncoderInfo& row) {
    return IsDNx(row) && FindDNXCompression(row.codecId).sampling == dnxSampling444;
}

int OwnFieldOrder(const CxEncoderInfo& row) {
    constexpr int progressive = 1;
    constexpr int topFieldFirst = 2;
    if (!IsDNx(row)) return 0;
    return (row.flags & kInterlacedFlag) != 0 ? topFieldFirst : progressive;
}
