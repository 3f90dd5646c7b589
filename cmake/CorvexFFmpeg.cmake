# FFmpeg's headers for the module, which finds the libraries themselves at run time: nothing here is linked. It looks
# for exactly the majors of these headers, since the layouts of FFmpeg's records belong to a major.

pkg_check_modules(FFMPEG REQUIRED
    libavformat>=58 libavcodec>=58 libavutil>=56 libswscale>=5 libswresample>=3)
if(FFMPEG_libavcodec_VERSION VERSION_GREATER_EQUAL 59 AND FFMPEG_libavcodec_VERSION VERSION_LESS 59.37)
    message(FATAL_ERROR "FFmpeg 5.0 is too old; 5.1 and later work, and so does 4")
endif()

add_library(ffmpeg_headers INTERFACE)
target_include_directories(ffmpeg_headers SYSTEM INTERFACE ${FFMPEG_INCLUDE_DIRS})

set(ffmpeg_majors)
foreach(library IN ITEMS avformat avcodec avutil swscale swresample)
    string(REGEX MATCH "^[0-9]+" major "${FFMPEG_lib${library}_VERSION}")
    list(APPEND ffmpeg_majors "lib${library} ${major}")
endforeach()
list(JOIN ffmpeg_majors ", " ffmpeg_majors)
message(STATUS "FFmpeg: the module is built for the majors ${ffmpeg_majors}, found at run time")
