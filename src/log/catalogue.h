#pragma once

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

/// The table that a number lies in, or nullptr.
constexpr const CatalogueTable* find_catalogue_table(int id) {
    for (const CatalogueTable& table : kCatalogueTables) {
        if (id >= table.first_id && id - table.first_id < table.row_count) {
            return &table;
        }
    }
    return nullptr;
}

/// The row with this number, or nullptr if the number lies in no table.
constexpr const CatalogueRow* find_catalogue_row(int id) {
    const CatalogueTable* const table = find_catalogue_table(id);
    return table == nullptr ? nullptr : &table->rows[id - table->first_id];
}

/// Place of a number among all rows, 0 to `kCatalogueRowCount` - 1, or -1 if it lies in no table.
constexpr int catalogue_index(int id) {
    const CatalogueTable* const table = find_catalogue_table(id);
    if (table == nullptr) {
        return -1;
    }
    int index = id - table->first_id;
    for (const CatalogueTable* ahead = kCatalogueTables; ahead != table; ++ahead) {
        index += ahead->row_count;
    }
    return index;
}

}  // namespace mediasplit
