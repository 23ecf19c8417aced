#include "search/searchhit.h"

#include "core/database.h"

namespace kivo {

SearchHit SearchHit::fromRow(const Row &row)
{
    return {row.integer("rowid"), row.text("id"), row.real("addedAt"), row.integer("openCount"),
        row.optionalReal("lastOpenedAt")};
}

} // namespace kivo
