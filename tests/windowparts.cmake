vexa_test(sourcecatalog LABEL unit LIBS vexa_windowparts)
vexa_test(formatprobes LABEL unit LIBS vexa_windowparts)
vexa_test(testrun LABEL unit LIBS vexa_windowparts)
vexa_test(report LABEL unit LIBS vexa_report)
