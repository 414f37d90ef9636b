#include "platform/local/change/settings.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/carry_out.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/library/access.h"
#include "platform/local/library/library.h"
#include "platform/photo_library.h"

#include <algorithm>

namespace local {

namespace {

void setAccess(CatalogueConnection& connection, std::int64_t access) {
    connection.statement("DELETE FROM limited_choice").run();
    connection.statement("UPDATE library SET access = ?1").bind(1, access).run();
}

} // namespace

Settings readSettings() {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(
        "SELECT access, (SELECT count(*) FROM limited_choice), confirm_deletions, derivatives_room "
        "FROM library");
    row.step();
    return {row.integer(0), static_cast<std::size_t>(row.integer(1)), row.integer(2) != 0,
            static_cast<std::uint64_t>(row.integer(3))};
}

void grantFullAccess() {
    carryOutSteps({[](CatalogueConnection& connection) {
        setAccess(connection, platform::PHAuthorizationStatusAuthorized);
    }});
}

void denyAccess() {
    carryOutSteps({[](CatalogueConnection& connection) {
        setAccess(connection, platform::PHAuthorizationStatusDenied);
    }});
}

void limitAccess(const std::vector<std::string>& identifiers) {
    carryOutSteps({[&](CatalogueConnection& connection) {
        setAccess(connection, platform::PHAuthorizationStatusLimited);
        Statement add = connection.statement("INSERT OR IGNORE INTO limited_choice "
                                             "SELECT n FROM asset WHERE uuid = ?1");
        Statement exists = connection.statement("SELECT 1 FROM asset WHERE uuid = ?1");
        for (const std::string& identifier : identifiers) {
            const auto uuid = uuidOfAssetIdentifier(identifier);
            exists.reset();
            if (!uuid || !exists.bindBlob(1, *uuid).step())
                throw LibraryError(platform::PHPhotosErrorDomain, invalidResourceCode,
                                   "There is no asset " + identifier + "; nothing was changed.");
            add.bindBlob(1, *uuid).run();
            add.reset();
        }
    }});
}

void setConfirmDeletions(bool ask) {
    carryOutSteps({[&](CatalogueConnection& connection) {
        connection.statement("UPDATE library SET confirm_deletions = ?1")
            .bind(1, std::int64_t{ask})
            .run();
    }});
}

void setDerivativesRoom(std::uint64_t bytes) {
    constexpr std::uint64_t most = INT64_MAX;
    bytes = std::min(bytes, most);
    carryOutSteps({[&](CatalogueConnection& connection) {
        connection.statement("UPDATE library SET derivatives_room = ?1")
            .bind(1, static_cast<std::int64_t>(bytes))
            .run();
    }});
    const auto folder = Library::open()->files().derivatives();
    if (*folder)
        imaging::tidyDerivatives(folder->get(), bytes);
}

} // namespace local
