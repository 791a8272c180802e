vexa_test(reportreader SERIAL LABEL unit LIBS vexa_report)
vexa_test(reportwriter LABEL unit LIBS vexa_report)
