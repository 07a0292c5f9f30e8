# The kernel binder driver under the object model; appended to host_libbinder_ndk.
target_sources(host_libbinder_ndk PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/BinderDevice.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverCommands.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverProcess.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverServiceManager.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverThread.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverTransport.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ReceivedBuffer.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SchedulerBoost.cpp
)
# The transport replaces a weak in-process default; nothing else refers to its file, so the
# linker is told to take it from the archive.
target_link_options(host_libbinder_ndk INTERFACE "LINKER:--undefined=abinder_driver_transport_anchor")
