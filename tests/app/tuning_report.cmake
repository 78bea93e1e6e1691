# trendlog --tuning-report end to end: a session at integration 64 with one clean step gives
# a row per integration that settles in its own time; a file too short is refused with a
# message and a non-zero exit status. Run with -DTRENDLOG=... -DDIR=...
set(trailer "-1, -1\r\nStartDateTime:11/22/2026 3:04:05 PM\r\nTORV-NET  \r\nSampling Rate: 64 (ms.)\r\nScanned:\r\nInegrationBufferSize: 12\r\nGain Bias Resol. Units LoLimit HiLimit\r\n  36   49 0.0002 kg     0.234   4.321\r\nAverage Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n 1107  801  1398 -306  291  1  1\r\nSamples: 39\r\nValue1_A2D:, 1 \r\nReading1_ms2:,2\r\n")
function(session path count)
  set(text "Timer2Interval,  300 \r\n-999999  1  0  0  0  ${count} \r\n")
  math(EXPR last "${count} - 1")
  foreach(i RANGE ${last})
    if(i LESS 20)
      string(APPEND text " ${i}  1.000\r\n")
    else()
      string(APPEND text " ${i}  2.000\r\n")
    endif()
  endforeach()
  file(WRITE ${path} "${text}${trailer}")
endfunction()

session(${DIR}/step.txt 40)
execute_process(COMMAND ${TRENDLOG} ${DIR}/step.txt --tuning-report ${DIR}/step.csv
                RESULT_VARIABLE rc ERROR_VARIABLE err)
file(READ ${DIR}/step.csv csv)
set(expected "integration_ms,readings_averaged,noise_sd,noise_peak_to_peak,settling_ms\n64,1,0,0,64\n128,2,0,0,128\n256,4,0,0,256\n")
if(NOT rc EQUAL 0 OR NOT csv STREQUAL expected)
  message(FATAL_ERROR "step.txt: exit ${rc} ${err}\n${csv}")
endif()

session(${DIR}/short.txt 5)
execute_process(COMMAND ${TRENDLOG} ${DIR}/short.txt --tuning-report ${DIR}/short.csv
                RESULT_VARIABLE rc ERROR_VARIABLE err)
if(rc EQUAL 0 OR NOT err MATCHES "too short: 5 readings")
  message(FATAL_ERROR "short.txt: exit ${rc}: ${err}")
endif()
