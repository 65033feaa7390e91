// Exports of the slots and sets of graphs: forwards, and nothing but forwards.
#include "reference/delete_property.h"
#include "reference/graph_flags.h"
#include "reference/graph_properties.h"
#include "reference/graph_slots.h"
#include "reference/number_sets.h"
#include "reference/text_references.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int16_t TOLVENAR_CALL XLRSaveText(uint32_t* buffer, uint32_t* size, uint16_t graph, const char* text,
                                  uint16_t slot) {
  return tolvenar::XLRSaveText(buffer, size, graph, text, slot);
}

int16_t TOLVENAR_CALL XLRGetText(uint32_t buffer, uint16_t graph, BSTR* text, uint16_t slot) {
  return tolvenar::XLRGetText(buffer, graph, text, slot);
}

int16_t TOLVENAR_CALL XLRSaveDouble(uint32_t* buffer, uint32_t* size, uint16_t graph, uint32_t low,
                                    uint32_t high, int16_t slot) {
  return tolvenar::XLRSaveDouble(buffer, size, graph, low, high, slot);
}

int16_t TOLVENAR_CALL XLRGetDouble(uint32_t buffer, uint16_t graph, void* value, uint16_t slot) {
  return tolvenar::XLRGetDouble(buffer, graph, value, slot);
}

int16_t TOLVENAR_CALL XLRSaveFont(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t first,
                                  uint16_t second, uint16_t third, uint16_t fourth, uint16_t slot) {
  return tolvenar::XLRSaveFont(buffer, size, graph, first, second, third, fourth, slot);
}

int16_t TOLVENAR_CALL XLRGetFont(uint32_t buffer, uint16_t graph, uint16_t* first, uint16_t* second,
                                 uint16_t* third, uint16_t* fourth, uint16_t slot) {
  return tolvenar::XLRGetFont(buffer, graph, first, second, third, fourth, slot);
}

int16_t TOLVENAR_CALL XLRSaveProperties(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph) {
  return tolvenar::XLRSaveProperties(buffer, size, array, graph);
}

int16_t TOLVENAR_CALL XLRGetProperties(uint32_t buffer, SAFEARRAY** array, uint16_t graph) {
  return tolvenar::XLRGetProperties(buffer, array, graph);
}

int16_t TOLVENAR_CALL XLRSaveSelVis(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph,
                                    int16_t n, int16_t set) {
  return tolvenar::XLRSaveSelVis(buffer, size, array, graph, n, set);
}

int16_t TOLVENAR_CALL XLRGetSelVis(uint32_t buffer, SAFEARRAY** array, uint16_t graph, int16_t n,
                                   uint16_t set) {
  return tolvenar::XLRGetSelVis(buffer, array, graph, n, set);
}

int16_t TOLVENAR_CALL XLRDeleteProperty(uint32_t buffer, uint16_t graph, uint16_t item, uint16_t index) {
  return tolvenar::XLRDeleteProperty(buffer, graph, item, index);
}

int16_t TOLVENAR_CALL XLRSaveSetText(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t index,
                                     const char* text, uint16_t set) {
  return tolvenar::XLRSaveSetText(buffer, size, graph, index, text, set);
}

int16_t TOLVENAR_CALL XLRGetSetText(uint32_t buffer, uint16_t graph, uint16_t index, BSTR* text,
                                    uint16_t set) {
  return tolvenar::XLRGetSetText(buffer, graph, index, text, set);
}

int16_t TOLVENAR_CALL XLRSaveSetInt(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first,
                                    int16_t last, int16_t max, SAFEARRAY** array, int16_t set) {
  return tolvenar::XLRSaveSetInt(buffer, size, graph, first, last, max, array, set);
}

int16_t TOLVENAR_CALL XLRGetSetInt(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array,
                                   uint16_t set) {
  return tolvenar::XLRGetSetInt(buffer, graph, n, array, set);
}

int16_t TOLVENAR_CALL XLRSaveSetLong(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first,
                                     int16_t last, int16_t max, SAFEARRAY** array, int16_t set) {
  return tolvenar::XLRSaveSetLong(buffer, size, graph, first, last, max, array, set);
}

int16_t TOLVENAR_CALL XLRGetSetLong(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array,
                                    uint16_t set) {
  return tolvenar::XLRGetSetLong(buffer, graph, n, array, set);
}

int16_t TOLVENAR_CALL XLRSaveTextRef(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first,
                                     int16_t last, int16_t max, SAFEARRAY** firsts, SAFEARRAY** seconds,
                                     int16_t set) {
  return tolvenar::XLRSaveTextRef(buffer, size, graph, first, last, max, firsts, seconds, set);
}

int16_t TOLVENAR_CALL XLRGetTextRef(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** firsts,
                                    SAFEARRAY** seconds, uint16_t set) {
  return tolvenar::XLRGetTextRef(buffer, graph, n, firsts, seconds, set);
}

}  // extern "C"
