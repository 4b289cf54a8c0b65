# Makes EditKel's MSI package and, when asked, the portable zip of the same
# files. Run by the build as
#   cmake -DKEL_...=... -P MakePackage.cmake
# with
#   KEL_FILE_LIST     a file naming the shipped files, one path a line
#   KEL_NAME          the package's name (EditKel-<version>-x64): the staging
#                     folder, and the one folder inside the zip
#   KEL_WORK_DIR      where the staging folder and the wixl sources go
#   KEL_MSI           the MSI to make; KEL_ZIP (optional) the zip to make
#   KEL_VERSION, KEL_PRODUCT_CODE, KEL_UPGRADE_CODE, KEL_VENDOR, KEL_RELEASE,
#   KEL_DISPLAY_NAME  what the package says about itself
#   KEL_PRODUCTS      the products, separated by "|": one shortcut and one
#                     "InstallPath" each
#   KEL_TEMPLATE      EditKel.wxs.in; KEL_ICON the program's icon
#   KEL_WIXL          wixl; KEL_STRIP the cross strip (debug information stays
#                     in the build's own bin/ folder, not in what users get)
#   KEL_POLICY_DIR    (optional) the Group Policy templates folder: shipped as
#                     PolicyDefinitions/ beside the programs
#   KEL_SIGN_PFX      (optional) a code-signing certificate (PKCS#12) with
#                     KEL_SIGN_PASSWORD_FILE holding its password: the programs
#                     and the MSI are signed with osslsigncode (SHA-256), with a
#                     time stamp from KEL_SIGN_TIMESTAMP_URL when given
#   KEL_SOURCE_DATE_EPOCH (optional) the time the shipped files carry in the
#                     programs' headers, the MSI's cabinet and the zip
cmake_minimum_required(VERSION 3.25)

foreach(required KEL_FILE_LIST KEL_NAME KEL_WORK_DIR KEL_MSI KEL_VERSION KEL_PRODUCT_CODE
                 KEL_UPGRADE_CODE KEL_VENDOR KEL_RELEASE KEL_DISPLAY_NAME KEL_PRODUCTS
                 KEL_TEMPLATE KEL_ICON KEL_WIXL KEL_STRIP)
    if(NOT DEFINED ${required} OR "${${required}}" STREQUAL "")
        message(FATAL_ERROR "MakePackage.cmake: ${required} is not set")
    endif()
endforeach()

# A GUID that stays the same for the same name in every build and version.
function(stable_guid name out)
    string(UUID guid NAMESPACE ${KEL_UPGRADE_CODE} NAME "${name}" TYPE SHA1 UPPER)
    set(${out} ${guid} PARENT_SCOPE)
endfunction()

# An identifier that the installer database accepts.
function(database_id prefix text out)
    string(MAKE_C_IDENTIFIER "${text}" id)
    set(${out} "${prefix}_${id}" PARENT_SCOPE)
endfunction()

# Signs a file in place with the certificate, when one is given.
function(sign_file path)
    if(NOT KEL_SIGN_PFX)
        return()
    endif()
    find_program(osslsigncode osslsigncode REQUIRED)
    set(timestamp "")
    if(KEL_SIGN_TIMESTAMP_URL)
        set(timestamp -ts ${KEL_SIGN_TIMESTAMP_URL})
    endif()
    set(password "")
    if(KEL_SIGN_PASSWORD_FILE)
        set(password -readpass ${KEL_SIGN_PASSWORD_FILE})
    endif()
    file(REMOVE ${path}.signed)
    execute_process(COMMAND ${osslsigncode} sign -pkcs12 ${KEL_SIGN_PFX} ${password} -h sha256
                            -n "${KEL_DISPLAY_NAME}" ${timestamp} -in ${path} -out ${path}.signed
                    RESULT_VARIABLE signed OUTPUT_VARIABLE sign_output ERROR_VARIABLE sign_output)
    if(NOT signed EQUAL 0)
        file(REMOVE ${path}.signed)
        message(FATAL_ERROR "MakePackage.cmake: osslsigncode could not sign ${path}:\n${sign_output}")
    endif()
    file(RENAME ${path}.signed ${path})
endfunction()

# --- the staged files ---------------------------------------------------------------
set(stage ${KEL_WORK_DIR}/${KEL_NAME})
set(wix ${KEL_WORK_DIR}/${KEL_NAME}.wix)
file(REMOVE_RECURSE ${stage} ${wix})
file(MAKE_DIRECTORY ${stage} ${wix})

# strip writes the time into a program's header unless SOURCE_DATE_EPOCH
# gives one: the commit's time, or 0 as the linker leaves it.
if(KEL_SOURCE_DATE_EPOCH)
    set(ENV{SOURCE_DATE_EPOCH} ${KEL_SOURCE_DATE_EPOCH})
else()
    set(ENV{SOURCE_DATE_EPOCH} 0)
endif()

file(STRINGS ${KEL_FILE_LIST} shipped)
set(total_bytes 0)
set(file_components "")
set(component_refs "")
foreach(source IN LISTS shipped)
    if(NOT EXISTS "${source}")
        message(FATAL_ERROR "MakePackage.cmake: the shipped file ${source} does not exist")
    endif()
    cmake_path(GET source FILENAME name)
    set(staged ${stage}/${name})
    if(name MATCHES "\\.(exe|dll)$")
        execute_process(COMMAND ${KEL_STRIP} --strip-all -o ${staged} ${source}
                        RESULT_VARIABLE stripped ERROR_VARIABLE strip_errors)
        if(NOT stripped EQUAL 0)
            message(FATAL_ERROR "MakePackage.cmake: ${KEL_STRIP} failed on ${source}: ${strip_errors}")
        endif()
        sign_file(${staged})
    else()
        file(COPY_FILE ${source} ${staged})
    endif()
    file(SIZE ${staged} bytes)
    math(EXPR total_bytes "${total_bytes} + ${bytes}")

    database_id(File "${name}" file_id)
    stable_guid("file ${name}" guid)
    string(APPEND file_components
           "            <Component Id=\"${file_id}\" Guid=\"${guid}\" Win64=\"yes\">\n"
           "              <File Id=\"${file_id}\" Source=\"../${KEL_NAME}/${name}\" KeyPath=\"yes\"/>\n"
           "            </Component>\n")
    string(APPEND component_refs "      <ComponentRef Id=\"${file_id}\"/>\n")
endforeach()
# The Group Policy templates: PolicyDefinitions/ with one folder per culture.
if(KEL_POLICY_DIR)
    file(GLOB_RECURSE policy_files RELATIVE ${KEL_POLICY_DIR} ${KEL_POLICY_DIR}/*)
    list(SORT policy_files)
    string(APPEND file_components
           "            <Directory Id=\"PolicyDefinitions\" Name=\"PolicyDefinitions\">\n")
    set(open_folder "")
    foreach(relative IN LISTS policy_files)
        cmake_path(GET relative PARENT_PATH folder)
        cmake_path(GET relative FILENAME name)
        if(NOT folder STREQUAL open_folder)
            if(open_folder)
                string(APPEND file_components "            </Directory>\n")
            endif()
            if(folder)
                database_id(Policy "${folder}" folder_id)
                string(APPEND file_components
                       "            <Directory Id=\"${folder_id}\" Name=\"${folder}\">\n")
            endif()
            set(open_folder "${folder}")
        endif()
        file(MAKE_DIRECTORY ${stage}/PolicyDefinitions/${folder})
        file(COPY_FILE ${KEL_POLICY_DIR}/${relative} ${stage}/PolicyDefinitions/${relative})
        file(SIZE ${stage}/PolicyDefinitions/${relative} bytes)
        math(EXPR total_bytes "${total_bytes} + ${bytes}")
        database_id(Policy "${relative}" file_id)
        stable_guid("policy ${relative}" guid)
        string(APPEND file_components
               "            <Component Id=\"${file_id}\" Guid=\"${guid}\" Win64=\"yes\">\n"
               "              <File Id=\"${file_id}\" Name=\"${name}\" Source=\"../${KEL_NAME}/PolicyDefinitions/${relative}\" KeyPath=\"yes\"/>\n"
               "            </Component>\n")
        string(APPEND component_refs "      <ComponentRef Id=\"${file_id}\"/>\n")
    endforeach()
    if(open_folder)
        string(APPEND file_components "            </Directory>\n")
    endif()
    string(APPEND file_components "            </Directory>\n")
endif()
if(NOT EXISTS ${stage}/EditKel.exe)
    message(FATAL_ERROR "MakePackage.cmake: EditKel.exe is not among the shipped files")
endif()
# Every staged file carries the commit's time (or a fixed one): the MSI's
# cabinet and the zip record it.
set(epoch 1672531200) # 2023-01-01 00:00:00 UTC
if(KEL_SOURCE_DATE_EPOCH)
    set(epoch ${KEL_SOURCE_DATE_EPOCH})
endif()
file(GLOB_RECURSE staged_files ${stage}/*)
execute_process(COMMAND touch -d @${epoch} ${staged_files} RESULT_VARIABLE touched)
if(NOT touched EQUAL 0)
    message(FATAL_ERROR "MakePackage.cmake: could not set the time of the staged files")
endif()

# Kilobytes, rounded up, as Programs and Features shows them.
math(EXPR KEL_SIZE_KB "(${total_bytes} + 1023) / 1024")

# --- one component per product: its shortcut and its "InstallPath" ------------------
string(REPLACE "|" ";" products "${KEL_PRODUCTS}")
set(product_components "")
foreach(product IN LISTS products)
    database_id(Product "${product}" id)
    stable_guid("product ${product}" guid)
    string(APPEND product_components
           "          <Component Id=\"${id}\" Guid=\"${guid}\" Win64=\"yes\">\n"
           "            <Shortcut Id=\"Shortcut_${product}\" Name=\"EditKel - ${product}\"\n"
           "                      Description=\"Configuration of ${product}\"\n"
           "                      Target=\"[INSTALLDIR]EditKel.exe\" Arguments=\"-app=${product}\"\n"
           "                      WorkingDirectory=\"INSTALLDIR\"/>\n"
           "            <RegistryValue Root=\"HKLM\" Key=\"Software\\${KEL_VENDOR}\\Brindlecove ${KEL_RELEASE}\\${product}\"\n"
           "                           Name=\"InstallPath\" Type=\"string\" Value=\"[INSTALLDIR]\" KeyPath=\"yes\"/>\n"
           "            <RemoveFolder Id=\"RemoveMenu_${product}\" On=\"uninstall\"/>\n"
           "          </Component>\n")
    string(APPEND component_refs "      <ComponentRef Id=\"${id}\"/>\n")
endforeach()

stable_guid("registration" KEL_REGISTRATION_GUID)
set(KEL_FILE_COMPONENTS "${file_components}")
set(KEL_PRODUCT_COMPONENTS "${product_components}")
set(KEL_COMPONENT_REFS "${component_refs}")
configure_file(${KEL_TEMPLATE} ${wix}/EditKel.wxs @ONLY)
file(COPY_FILE ${KEL_ICON} ${wix}/EditKel.ico)

# --- the MSI ------------------------------------------------------------------------
# wixl ignores attributes it does not know with no more than a warning; here
# every warning fails the package, so that nothing of it goes missing unseen.
file(REMOVE ${KEL_MSI})
execute_process(COMMAND ${KEL_WIXL} --arch x64 -o ${KEL_MSI} EditKel.wxs
                WORKING_DIRECTORY ${wix}
                RESULT_VARIABLE built OUTPUT_VARIABLE wixl_output ERROR_VARIABLE wixl_output)
if(NOT built EQUAL 0 OR wixl_output MATCHES "WARNING|CRITICAL|unhandled")
    file(REMOVE ${KEL_MSI})
    message(FATAL_ERROR "MakePackage.cmake: wixl could not make ${KEL_MSI} from ${wix}/EditKel.wxs:\n"
                        "${wixl_output}")
endif()
sign_file(${KEL_MSI})

# --- the portable zip ---------------------------------------------------------------
if(KEL_ZIP)
    file(REMOVE ${KEL_ZIP})
    # The same files give the same zip: the entries in a fixed (sorted) order,
    # each with the time of the commit (or a fixed one), and no extra fields
    # (they would carry the files' access and change times).
    find_program(zip_program zip REQUIRED)
    file(GLOB_RECURSE entries RELATIVE ${KEL_WORK_DIR} ${stage}/*)
    list(SORT entries)
    list(JOIN entries "\n" entry_lines)
    file(WRITE ${KEL_WORK_DIR}/${KEL_NAME}.entries "${entry_lines}\n")
    set(ENV{TZ} UTC)
    execute_process(COMMAND ${zip_program} -X -D -q ${KEL_ZIP} -@
                    INPUT_FILE ${KEL_WORK_DIR}/${KEL_NAME}.entries
                    WORKING_DIRECTORY ${KEL_WORK_DIR} RESULT_VARIABLE zipped)
    if(NOT zipped EQUAL 0)
        message(FATAL_ERROR "MakePackage.cmake: could not make ${KEL_ZIP}")
    endif()
endif()
