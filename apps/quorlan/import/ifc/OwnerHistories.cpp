#include "ifc/OwnerHistories.h"

#include <ifcpp/IFC4/include/IfcApplication.h>
#include <ifcpp/IFC4/include/IfcChangeActionEnum.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcOrganization.h>
#include <ifcpp/IFC4/include/IfcOwnerHistory.h>
#include <ifcpp/IFC4/include/IfcPerson.h>
#include <ifcpp/IFC4/include/IfcPersonAndOrganization.h>
#include <ifcpp/IFC4/include/IfcStateEnum.h>
#include <ifcpp/IFC4/include/IfcTimeStamp.h>

#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

using Quorlan::OwnerHistoryChangeAction;

/// "Given Family", or the person's identification where there is no name.
std::string ToUserName(IfcPersonAndOrganization const* user) {
    if (!user || !user->m_ThePerson) return {};
    auto const& person = *user->m_ThePerson;
    auto const given = ToUtf8(person.m_GivenName);
    auto const family = ToUtf8(person.m_FamilyName);
    auto const name = given.empty() || family.empty() ? given + family : given + ' ' + family;
    return name.empty() ? ToUtf8(person.m_Identification) : name;
}

/// "Name Version".
std::string ToApplicationName(IfcApplication const* application) {
    if (!application) return {};
    auto const name = ToUtf8(application->m_ApplicationFullName);
    auto const version = ToUtf8(application->m_Version);
    return name.empty() || version.empty() ? name + version : name + ' ' + version;
}

OwnerHistoryChangeAction ToAction(IfcChangeActionEnum const* action) {
    if (!action) return OwnerHistoryChangeAction::NOCHANGE;
    switch (action->m_enum) {
        case IfcChangeActionEnum::ENUM_MODIFIED: return OwnerHistoryChangeAction::MODIFIED;
        case IfcChangeActionEnum::ENUM_ADDED: return OwnerHistoryChangeAction::ADDED;
        case IfcChangeActionEnum::ENUM_DELETED: return OwnerHistoryChangeAction::DELETED;
        default: return OwnerHistoryChangeAction::NOCHANGE;
    }
}

template <typename Stamp>
std::int64_t ToSeconds(Stamp const& stamp) {
    return stamp ? stamp->m_value : 0;
}

}  // namespace

void OwnerHistories::Link(Quorlan::EntityIndex_t entity, IfcOwnerHistory const* history) {
    if (!history) return;
    auto const known = histories_.find(history);
    auto const index = known != histories_.end() ? known->second : Write(*history);
    histories_.emplace(history, index);
    writer_.LinkOwnerHistory(entity, index);
}

std::uint32_t OwnerHistories::Write(IfcOwnerHistory const& history) {
    Quorlan::OwnerPart part;
    part.user = ToUserName(history.m_OwningUser.get());
    if (history.m_OwningUser && history.m_OwningUser->m_TheOrganization) {
        part.organization = ToUtf8(history.m_OwningUser->m_TheOrganization->m_Name);
    }
    part.application = ToApplicationName(history.m_OwningApplication.get());
    auto const key = std::make_tuple(part.user, part.organization, part.application);
    auto const known = parts_.find(key);
    auto const partIndex = known != parts_.end() ? known->second : writer_.AddOwnerPart(part);
    parts_.emplace(key, partIndex);

    Quorlan::OwnerHistoryRecord record;
    record.state = history.m_State ? static_cast<std::uint32_t>(history.m_State->m_enum) : 0;
    record.changeAction = ToAction(history.m_ChangeAction.get());
    record.creationDate = ToSeconds(history.m_CreationDate);
    record.lastModifiedDate = ToSeconds(history.m_LastModifiedDate);

    Quorlan::OwnerHistoryLinkRecord link;
    link.lastModifyingUser = ToUserName(history.m_LastModifyingUser.get());
    link.lastModifyingApplication = ToApplicationName(history.m_LastModifyingApplication.get());
    return writer_.AddOwnerHistory(partIndex, writer_.AddOwnerHistoryRecord(record), link);
}

}  // namespace QuorlanProgram::Import
