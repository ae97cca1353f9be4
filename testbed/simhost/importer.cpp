#include "simhost/importer.h"

#include <cstring>
#include <memory>
#include <stdexcept>

#include "host/selectors.h"
#include "simhost/text.h"

namespace simhost {

std::int32_t Importer::call(std::int32_t selector, void* param1, void* param2) const {
    if (m_plugin->entry() == nullptr) {
        throw std::logic_error("the plug-in is not loaded");
    }
    // On the heap and overwritten afterwards: the record is valid during the call only, and a plug-in that
    // keeps its address shall be found out.
    const auto parms = std::make_unique<host::imStdParms>(m_host->stdParms());
    const std::int32_t result = m_plugin->entry()(selector, parms.get(), param1, param2);
    std::memset(static_cast<void*>(parms.get()), 0xDD, sizeof(host::imStdParms));
    return result;
}

std::int32_t Importer::callWithNumber(std::int32_t selector, std::uint64_t param1, void* param2) const {
    return call(selector, reinterpret_cast<void*>(static_cast<std::uintptr_t>(param1)), param2);
}

void Importer::checkBounds(Rule rule, const std::string& damage, const char* call, const char* record,
                           const char* field) const {
    if (!damage.empty()) {
        m_host->addViolation({rule, call, damage, record, field});
    }
}

Answer<host::imImportInfoRec> Importer::init() const {
    const auto before = filledRecord<host::imImportInfoRec>(m_fill);
    GuardedRecord guarded(before);
    const std::int32_t result = call(host::imInit, guarded.address(), nullptr);
    checkBounds(guarded, "imInit");
    return {result, before, guarded.value()};
}

std::int32_t Importer::shutdown() const {
    return call(host::imShutdown, nullptr, nullptr);
}

std::int32_t Importer::getSupports8() const {
    return call(host::imGetSupports8, nullptr, nullptr);
}

Answer<host::imIndFormatRec> Importer::getIndFormat(std::uint32_t index) const {
    const auto before = filledRecord<host::imIndFormatRec>(m_fill);
    GuardedRecord guarded(before);
    const std::int32_t result = callWithNumber(host::imGetIndFormat, index, guarded.address());
    checkBounds(guarded, "imGetIndFormat");
    return {result, before, guarded.value()};
}

SubTypeNames Importer::getSubTypeNames(std::uint32_t fileType) const {
    SubTypeNames out;
    void* block = nullptr;
    out.result = callWithNumber(host::imGetSubTypeNames, fileType, static_cast<void*>(&block));
    if (block == nullptr) {
        return out;
    }
    const auto size = m_host->blockSize(block);
    if (!size) {
        m_host->addViolation(
            {Rule::kMemoryHandedOver, "imGetSubTypeNames", "an address that is no live block"});
        return out;
    }
    out.delivered = true;
    out.blockBytes = *size;
    using Row = host::imSubTypeDescriptionRec;
    if (*size % sizeof(Row) != 0) {
        m_host->addViolation({Rule::kRecordsSubtypeRows, "imGetSubTypeNames",
                              std::to_string(*size) + " bytes in rows of " + std::to_string(sizeof(Row)),
                              "imSubTypeDescriptionRec"});
    }
    for (std::size_t at = 0; at + sizeof(Row) <= *size; at += sizeof(Row)) {
        Row row;
        std::memcpy(&row, static_cast<const std::uint8_t*>(block) + at, sizeof(Row));
        SubTypeName name;
        name.code = static_cast<std::uint32_t>(row.subType);
        for (std::size_t i = 0; i < std::size(row.subTypeName) && row.subTypeName[i] != 0; ++i) {
            name.name.push_back(row.subTypeName[i]);
        }
        name.nameUtf8 = toUtf8(name.name);
        out.names.push_back(std::move(name));
    }
    (void)m_host->freeBlock(block, "imGetSubTypeNames");
    return out;
}

}  // namespace simhost
