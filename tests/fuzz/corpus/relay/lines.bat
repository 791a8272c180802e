"/t" /source:"a
b" /time:70
