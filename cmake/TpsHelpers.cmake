# Adds each listed subdirectory that has a CMakeLists.txt, so folders can grow independently.
function(tps_add_subdirectories)
    foreach(dir IN LISTS ARGN)
        if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/CMakeLists.txt)
            add_subdirectory(${dir})
        endif()
    endforeach()
endfunction()
