find_package(Qt5 5.15 REQUIRED COMPONENTS Gui Svg)
vexa_test(resources LABEL unit LIBS vexa_resources Qt5::Gui Qt5::Svg)
