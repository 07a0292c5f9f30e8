# Tests of the light sensor manager, the sensor service stand-in and sensord. Included by
# tests/sensor/CMakeLists.txt; adds the executable sensor_manager_tests when its libraries exist.
# The manager against sensord over the real driver is covered by the service's multi-process
# and fault tests.

if(TARGET host_sensorservice AND TARGET tps_sensord_core AND TARGET tps_config
        AND TARGET tps_test_common)
    include(GoogleTest)
    set(TPS_SENSOR_TEST_DIR ${CMAKE_CURRENT_LIST_DIR})

    add_executable(sensor_manager_tests
        ${TPS_SENSOR_TEST_DIR}/lightsensormanager_FakeService.cpp
        ${TPS_SENSOR_TEST_DIR}/lightsensormanager_Test.cpp
        ${TPS_SENSOR_TEST_DIR}/sensord_Test.cpp
        ${TPS_SENSOR_TEST_DIR}/sensorservice_ConvertTest.cpp
        ${TPS_SENSOR_TEST_DIR}/sensorservice_LinkSeams.cpp
        ${TPS_SENSOR_TEST_DIR}/sensorservice_TestUtil.cpp
        ${TPS_SENSOR_TEST_DIR}/sensorservice_WireTest.cpp
    )
    # The manager's own library when sensor/ offers it; otherwise its source is built here.
    if(TARGET tps_light_sensor_manager)
        target_link_libraries(sensor_manager_tests PRIVATE tps_light_sensor_manager)
    else()
        target_sources(sensor_manager_tests PRIVATE
            ${TPS_SENSOR_TEST_DIR}/../../sensor/TPLightSensorManagerAIDL.cpp)
        target_include_directories(sensor_manager_tests PRIVATE
            ${TPS_SENSOR_TEST_DIR}/../../sensor)
    endif()
    target_include_directories(sensor_manager_tests PRIVATE ${TPS_SENSOR_TEST_DIR})
    target_link_libraries(sensor_manager_tests PRIVATE host_sensorservice tps_sensord_core
        tps_config tps_test_common GTest::gtest_main Threads::Threads)
    # sensorservice_LinkSeams.cpp records transactions and scheduler policies through these.
    target_link_options(sensor_manager_tests PRIVATE
        -Wl,--wrap=AIBinder_transact -Wl,--wrap=AIBinder_setMinSchedulerPolicy)
    gtest_discover_tests(sensor_manager_tests)
endif()
