# The kernels for graphics processors, compiled into the tool wherever a CUDA compiler that works is found, and left out
# with a message elsewhere. The run-time is linked statically and looks for a driver only when something is launched, so
# the tool runs on any machine.
set(byDefault ON)
if(CMAKE_CROSSCOMPILING OR NORV_SANITIZE OR NORV_FUZZ)
  set(byDefault OFF)
endif()
option(NORV_GPU "Compile the kernels for graphics processors into the tool where a CUDA compiler is found" ${byDefault})
if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
  set(CMAKE_CUDA_ARCHITECTURES 75)  # the oldest that every current compiler knows; newer processors translate it
endif()
set(gpuWarnings -Werror=all-warnings -Xcompiler=-Wall,-Wextra,-Werror)

# Whether the compiler makes a program of the kernels: it may know neither this system's C++ compiler nor the
# architecture, and its run-time may be missing. Asked outside this project, where a failure ends nothing, and once for
# each compiler. The answer goes to NORV_GPU_WORKS.
function(norv_try_gpu)
  set(asked "${NORV_NVCC} for ${CMAKE_CUDA_ARCHITECTURES} with ${CMAKE_CUDA_HOST_COMPILER}")
  if("${NORV_GPU_ASKED}" STREQUAL "${asked}")
    return()
  endif()
  set(flags -std=c++17 -cudart static ${gpuWarnings} -I ${PROJECT_SOURCE_DIR}/src)
  if(CMAKE_CUDA_ARCHITECTURES MATCHES "^[0-9]+$")
    list(APPEND flags -arch=sm_${CMAKE_CUDA_ARCHITECTURES})
  endif()
  if(CMAKE_CUDA_HOST_COMPILER)
    list(APPEND flags -ccbin ${CMAKE_CUDA_HOST_COMPILER})
  endif()
  set(folder ${PROJECT_BINARY_DIR}/gpu_check)
  file(WRITE ${folder}/main.cu "int main() { return 0; }\n")
  execute_process(
    COMMAND ${NORV_NVCC} ${flags} ${PROJECT_SOURCE_DIR}/src/gpu/kernels.cu ${folder}/main.cu -o ${folder}/main
    RESULT_VARIABLE result OUTPUT_FILE ${folder}/log ERROR_FILE ${folder}/log)
  if(result EQUAL 0)  # else a number or a text
    set(works ON)
  else()
    set(works OFF)
  endif()
  set(NORV_GPU_WORKS ${works} CACHE INTERNAL "")
  set(NORV_GPU_ASKED "${asked}" CACHE INTERNAL "")
endfunction()

if(NORV_GPU AND NOT WIN32)
  if(DEFINED ENV{CUDACXX})
    set(NORV_NVCC $ENV{CUDACXX} CACHE FILEPATH "The CUDA compiler")
  endif()
  find_program(NORV_NVCC nvcc HINTS ENV CUDA_PATH PATHS /usr/local/cuda PATH_SUFFIXES bin DOC "The CUDA compiler")
  if(NORV_NVCC)
    norv_try_gpu()
    cmake_path(GET NORV_NVCC PARENT_PATH CUDAToolkit_ROOT)
    find_package(CUDAToolkit QUIET)
  endif()
  if(NOT NORV_NVCC)
    message(STATUS "The kernels for graphics processors are left out: no CUDA compiler (nvcc) is found")
  elseif(NOT NORV_GPU_WORKS OR NOT TARGET CUDA::cudart_static)
    message(STATUS "The kernels for graphics processors are left out: ${NORV_NVCC} makes no program of them "
      "(see ${PROJECT_BINARY_DIR}/gpu_check/log)")
  else()
    set(CMAKE_CUDA_COMPILER ${NORV_NVCC})
    enable_language(CUDA)
    set(CMAKE_CUDA_STANDARD 17)
    add_library(norv_gpu OBJECT src/gpu/kernels.cu)
    target_include_directories(norv_gpu PUBLIC src)
    target_compile_options(norv_gpu PRIVATE ${gpuWarnings})
    set_target_properties(norv_gpu PROPERTIES CUDA_RUNTIME_LIBRARY Static)
    # As objects, not as a library: the kernels are registered although nothing calls them.
    target_link_libraries(norv PRIVATE norv_gpu CUDA::cudart_static)
    set_target_properties(norv PROPERTIES LINKER_LANGUAGE CXX)

    enable_testing()
    add_executable(norv_gpu_test tests/gpu/self_test.cu)
    target_link_libraries(norv_gpu_test PRIVATE norv_gpu)
    set_target_properties(norv_gpu_test PROPERTIES CUDA_RUNTIME_LIBRARY Static)
    add_test(NAME gpu_kernels COMMAND norv_gpu_test)
    set_tests_properties(gpu_kernels PROPERTIES SKIP_RETURN_CODE 77)
  endif()
endif()
