# Installs a tree that can be moved as a whole: libraries, headers, the command, and the files by which CMake
# and pkg-config find them.

include(CMakePackageConfigHelpers)

install(TARGETS corvexvideoformats corvexsystem corvexscript
    EXPORT corvexvideoformatsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# The ProRes engine, for programs that use it alone: the component `prores_engine` of the package.
install(TARGETS prores_engine
    EXPORT prores_engineTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET corvexvf)
    install(TARGETS corvexvf RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# The public headers; what else stands in the folders is the libraries' own.
set(public_headers
    host/ColorConvert.h host/CorvexDoc.h host/CxID.h host/CxString.h host/Edition.h host/Export.h host/Image.h
    host/ImageFormat.h host/Input.h host/InputTags.h host/MediaFormat.h host/Object.h host/Operator.h host/Parameter.h
    host/Platform.h host/Registry.h host/Request.h host/ScriptInfo.h host/ScriptVal.h host/TagList.h
    framework/CxAbstractAVCodec.h framework/CxAbstractTemporalDecoder.h framework/CxAbstractTemporalDecoder-inl.h
    framework/CxAlignedBuffer.h framework/CxAVCodecRegistry.h framework/CxAVTypes.h framework/CxDecodedFramesCache.h
    framework/Export.h framework/SampleSize.h
    pixel/PixelConvert.h
    codecs/DNXCodec.h codecs/ProResCodec.h codecs/UncompressedCodecs.h
    iostream/BitBuffer.h iostream/IOElementaryStreamInfo.h iostream/IOFramePayload.h iostream/IOH264NALPayload.h
    iostream/IOHEVCNALPayload.h
    prores/Prx.h)
foreach(header IN LISTS public_headers)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${PROJECT_SOURCE_DIR}/src/${header}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvexvideoformats/${folder})
endforeach()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/corvexvideoformats)
install(EXPORT corvexvideoformatsTargets NAMESPACE corvexvideoformats:: DESTINATION ${package_dir})
install(EXPORT prores_engineTargets NAMESPACE corvexvideoformats:: DESTINATION ${package_dir})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/corvexvideoformatsConfig.cmake.in
    ${CMAKE_BINARY_DIR}/corvexvideoformatsConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(
    ${CMAKE_BINARY_DIR}/corvexvideoformatsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/corvexvideoformatsConfig.cmake
    ${CMAKE_BINARY_DIR}/corvexvideoformatsConfigVersion.cmake
    DESTINATION ${package_dir})

# The pkg-config file names its own place, so that a moved tree stays right.
file(RELATIVE_PATH prefix_from_pkgconfig
    /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
configure_file(
    ${PROJECT_SOURCE_DIR}/cmake/corvexvideoformats.pc.in ${CMAKE_BINARY_DIR}/corvexvideoformats.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/corvexvideoformats.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
