# The kernel binder driver under the object model; appended to host_libbinder_ndk.
target_sources(host_libbinder_ndk PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/BinderDevice.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverCommands.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverProcess.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DriverThread.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ReceivedBuffer.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SchedulerBoost.cpp
)
