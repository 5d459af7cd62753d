# Writes fernhollow.json beside the programs: the facts about this build that are not compiled in.
set(bundle_info "{}")

function(fernhollow_bundle_fact key value)
  if("${value}" MATCHES "[\"\\]")
    message(FATAL_ERROR "${key} may hold neither quotes nor backslashes: ${value}")
  endif()
  string(JSON bundle_info SET "${bundle_info}" "${key}" "\"${value}\"")
  set(bundle_info
      "${bundle_info}"
      PARENT_SCOPE)
endfunction()

fernhollow_bundle_fact(CFBundleShortVersionString "${PROJECT_VERSION}")
fernhollow_bundle_fact(CFBundleVersion "${PROJECT_VERSION}")
if(FERNHOLLOW_UPDATE_FEED)
  if(NOT FERNHOLLOW_UPDATE_PUBLIC_KEY)
    message(FATAL_ERROR "FERNHOLLOW_UPDATE_FEED needs FERNHOLLOW_UPDATE_PUBLIC_KEY (Documentation/Releasing.md)")
  endif()
  fernhollow_bundle_fact(UpdateFeedURL "${FERNHOLLOW_UPDATE_FEED}")
  fernhollow_bundle_fact(UpdatePublicKey "${FERNHOLLOW_UPDATE_PUBLIC_KEY}")
  fernhollow_bundle_fact(UpdateCheckInterval "${FERNHOLLOW_UPDATE_INTERVAL}")
endif()
file(CONFIGURE OUTPUT "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/fernhollow.json" CONTENT "${bundle_info}\n" @ONLY)
