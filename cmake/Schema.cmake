# Generates the accessors of the model buffer from its schema.
set(QUORLAN_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
set(QUORLAN_SCHEMA ${PROJECT_SOURCE_DIR}/schema/model.fbs)
add_custom_command(
    OUTPUT ${QUORLAN_GENERATED_DIR}/model_generated.h
    COMMAND ${QUORLAN_FLATC} --cpp --cpp-std c++17 --scoped-enums --no-warnings -o ${QUORLAN_GENERATED_DIR}
            ${QUORLAN_SCHEMA}
    DEPENDS ${QUORLAN_SCHEMA}
    COMMENT "Generating the accessors of the model buffer"
    VERBATIM)
add_custom_target(quorlan_schema DEPENDS ${QUORLAN_GENERATED_DIR}/model_generated.h)
