# Every Windows program the product ships is signed by the publisher whose
# certificate Setup.exe carries and checks the others against: a release's
# certificate from the environment (scripts/sign.sh), else a test publisher
# made once for this build tree in ${ZENDRA_SIGNING_DIR}, never committed.
option(ZENDRA_SIGN "Sign the programs the product ships" ON)
set(ZENDRA_SIGNING_DIR ${CMAKE_BINARY_DIR}/signing)
set(ZENDRA_SIGN_SCRIPT ${CMAKE_SOURCE_DIR}/scripts/sign.sh)

# Taken at every build, so that the environment of this build decides; the
# file changes only with the certificate, and only then is Setup.exe's
# resource built again.
add_custom_target(publisher
  COMMAND bash ${ZENDRA_SIGN_SCRIPT} publisher ${ZENDRA_SIGNING_DIR}
  BYPRODUCTS ${ZENDRA_SIGNING_DIR}/publisher.cer
  COMMENT "The publisher's certificate")

# Signs the target's file in place once it is linked (and stripped); a new
# certificate links it again, so that every program has the same signer.
function(zendra_sign target)
  add_dependencies(${target} publisher)
  set_property(TARGET ${target} APPEND PROPERTY
               LINK_DEPENDS ${ZENDRA_SIGNING_DIR}/publisher.cer)
  if(ZENDRA_SIGN)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND bash ${ZENDRA_SIGN_SCRIPT} sign ${ZENDRA_SIGNING_DIR}
              $<TARGET_FILE:${target}>
      VERBATIM)
  endif()
endfunction()
