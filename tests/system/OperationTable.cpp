#include "OperationTable.h"

#include <iterator>

const std::vector<OperationRow>& operationTable() {
    static const std::vector<OperationRow> table = [] {
        std::vector<OperationRow> rows = paramTable();
        for (auto& more : {diagnosticTable(), sessionTable()})
            rows.insert(rows.end(), more.begin(), more.end());
        return rows;
    }();
    return table;
}
