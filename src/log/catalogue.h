#pragma once

#include <cstddef>
#include <iterator>

#include "src/log/catalogue_row.h"
#include "src/log/catalogue_rows.h"

namespace mediasplit {

/// A table of the catalogue: consecutive numbers from `first_id` on.
struct CatalogueTable {
    int first_id = 0;
    int row_count = 0;
    const CatalogueRow* rows = nullptr;
};

inline constexpr CatalogueTable kCatalogueTables[] = {
    {1, static_cast<int>(std::size(output_log_list)), output_log_list},
    {1001, static_cast<int>(std::size(info_log_list)), info_log_list},
    {2001, static_cast<int>(std::size(warning_log_list)), warning_log_list},
    {3001, static_cast<int>(std::size(system_error_log_list)), system_error_log_list},
    {4001, static_cast<int>(std::size(error_log_list)), error_log_list},
};

/// Rows of all tables together.
inline constexpr int kCatalogueRowCount = [] {
    int count = 0;
    for (const CatalogueTable& table : kCatalogueTables) {
        count += table.row_count;
    }
    return count;
}();

/// Place of the table that a number lies in, the number of tables for one that lies in none. (Not a
/// pointer: under its sanitizers GCC 12 takes no comparison of pointers for a constant.)
constexpr std::size_t catalogue_table_of(int id) {
    std::size_t at = 0;
    for (const CatalogueTable& table : kCatalogueTables) {
        if (id >= table.first_id && id - table.first_id < table.row_count) {
            break;
        }
        ++at;
    }
    return at;
}

/// Whether a number lies in a table.
constexpr bool is_in_catalogue(int id) {
    return catalogue_table_of(id) < std::size(kCatalogueTables);
}

/// The row with this number, which must lie in a table.
constexpr const CatalogueRow& catalogue_row(int id) {
    const CatalogueTable& table = kCatalogueTables[catalogue_table_of(id)];
    return table.rows[id - table.first_id];
}

/// The row with this number, or nullptr if the number lies in no table.
constexpr const CatalogueRow* find_catalogue_row(int id) {
    return is_in_catalogue(id) ? &catalogue_row(id) : nullptr;
}

/// Place of a number among all rows, 0 to `kCatalogueRowCount` - 1, or -1 if it lies in no table.
constexpr int catalogue_index(int id) {
    if (!is_in_catalogue(id)) {
        return -1;
    }
    const std::size_t table = catalogue_table_of(id);
    int index = id - kCatalogueTables[table].first_id;
    for (std::size_t ahead = 0; ahead < table; ++ahead) {
        index += kCatalogueTables[ahead].row_count;
    }
    return index;
}

}  // namespace mediasplit
