// Exports of what references hold, tables, graphs and chart edits: forwards, and nothing but forwards.
#include "reference/chart_edit.h"
#include "reference/graph_object.h"
#include "reference/reference_index.h"
#include "reference/reference_table.h"
#include "reference/table_positions.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int16_t TOLVENAR_CALL XLRCreateTable(uint32_t* buffer, uint32_t* size, uint16_t d1, uint16_t d2, uint16_t d3,
                                     uint16_t d4) {
  return tolvenar::XLRCreateTable(buffer, size, d1, d2, d3, d4);
}

int16_t TOLVENAR_CALL XLRDeleteTable(uint32_t buffer, uint16_t tableId) {
  return tolvenar::XLRDeleteTable(buffer, tableId);
}

int16_t TOLVENAR_CALL XLRFillTable(uint32_t* buffer, uint32_t* size, SAFEARRAY** values, uint16_t tableId) {
  return tolvenar::XLRFillTable(buffer, size, values, tableId);
}

int16_t TOLVENAR_CALL XLRTextToTable(uint32_t* buffer, uint32_t* size, int16_t tableId, uint32_t c1,
                                     uint32_t c2, uint32_t c3, uint32_t c4, const char* text) {
  return tolvenar::XLRTextToTable(buffer, size, tableId, {c1, c2, c3, c4}, text);
}

int16_t TOLVENAR_CALL XLRValueToTable(uint32_t* buffer, uint32_t* size, int16_t tableId, uint32_t c1,
                                      uint32_t c2, uint32_t c3, uint32_t c4, uint32_t low, uint32_t high) {
  return tolvenar::XLRValueToTable(buffer, size, tableId, {c1, c2, c3, c4}, low, high);
}

int16_t TOLVENAR_CALL XLRGetRefTable(uint32_t buffer, uint16_t tableId, SAFEARRAY** values) {
  return tolvenar::XLRGetRefTable(buffer, tableId, values);
}

int16_t TOLVENAR_CALL XLRGetTableText(uint32_t buffer, uint16_t tableId, BSTR* text, uint32_t c1, uint32_t c2,
                                      uint32_t c3, uint32_t c4) {
  return tolvenar::XLRGetTableText(buffer, tableId, text, {c1, c2, c3, c4});
}

int16_t TOLVENAR_CALL XLRGetTableValue(uint32_t buffer, uint16_t tableId, void* value, uint32_t c1,
                                       uint32_t c2, uint32_t c3, uint32_t c4) {
  return tolvenar::XLRGetTableValue(buffer, tableId, value, {c1, c2, c3, c4});
}

int16_t TOLVENAR_CALL XLRGetNumItems(uint32_t buffer, int16_t kind) {
  return tolvenar::XLRGetNumItems(buffer, kind);
}

int16_t TOLVENAR_CALL XLRGetIndices(uint32_t buffer, SAFEARRAY** first, SAFEARRAY** second, uint32_t count,
                                    uint32_t kind) {
  return tolvenar::XLRGetIndices(buffer, first, second, count, kind);
}

int16_t TOLVENAR_CALL XLRCreateGraph(uint32_t* buffer, uint32_t* size, uint16_t tableId) {
  return tolvenar::XLRCreateGraph(buffer, size, tableId);
}

int16_t TOLVENAR_CALL XLRCreateChartEdit(uint32_t* buffer, uint32_t* size, uint8_t number, uint16_t id,
                                         uint16_t graphId) {
  return tolvenar::XLRCreateChartEdit(buffer, size, number, id, graphId);
}

int16_t TOLVENAR_CALL XLRUpdateGraph(uint32_t buffer, uint16_t graphId, uint16_t tableId) {
  return tolvenar::XLRUpdateGraph(buffer, graphId, tableId);
}

int16_t TOLVENAR_CALL XLRUpdateChartEdit(uint32_t buffer, uint16_t number, uint16_t id, uint16_t graphId) {
  return tolvenar::XLRUpdateChartEdit(buffer, number, id, graphId);
}

int16_t TOLVENAR_CALL XLRDeleteGraph(uint32_t buffer, uint16_t graphId) {
  return tolvenar::XLRDeleteGraph(buffer, graphId);
}

int16_t TOLVENAR_CALL XLRDeleteChartEdit(uint32_t buffer, uint16_t number, uint32_t id) {
  return tolvenar::XLRDeleteChartEdit(buffer, number, id);
}

int16_t TOLVENAR_CALL XLRTableByGraph(uint32_t buffer, uint16_t graphId, uint16_t link) {
  return tolvenar::XLRTableByGraph(buffer, graphId, link);
}

int16_t TOLVENAR_CALL XLRGraphByChartEdit(uint32_t buffer, uint16_t number, uint16_t id) {
  return tolvenar::XLRGraphByChartEdit(buffer, number, id);
}

int16_t TOLVENAR_CALL XLRUpdateGraphTable(uint32_t* buffer, uint32_t* size, uint16_t graphId,
                                          uint16_t tableId, uint16_t link) {
  return tolvenar::XLRUpdateGraphTable(buffer, size, graphId, tableId, link);
}

}  // extern "C"
