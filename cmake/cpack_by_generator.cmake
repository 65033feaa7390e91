# Read by cpack once per generator: Debian packages come one per component, under /usr; archives hold everything.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENTS_GROUPING IGNORE)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
endif()
