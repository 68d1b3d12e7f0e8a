# The native test programs that run the code of the products. mutate.sh and coverage.sh read this file.
# shellcheck shell=bash disable=SC2034
programs=(device_tests protocol_tests files_tests jobs_tests api_tests list_document_test
  meaning_tests virtual_camera_core_test tool_arguments_test tool_lists_test tool_progress_test
  tool_run_test tool_scripts_test tool_whole_test tool_registers_test tool_library_test
  tool_flash_parts_test tool_flash_program_test tool_flash_commands_test tool_flash_journal_test
  tool_flash_cut_test tool_flash_sequences_test tool_images_test tool_maps_test tool_names_test
  tool_workbench_rules_test tool_workbench_work_test tool_workbench_server_test)
