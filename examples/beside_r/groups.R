air <- read.csv("data/airquality.csv")
air$warmth <- ifelse(air$Temp >= 80, "hot", "cool")
air$windy <- ifelse(air$Wind > 10, "windy", "calm")
s <- aggregate(Ozone ~ warmth + windy, air, function(x)
  c(days = length(x), median = median(x, na.rm = TRUE), spread = IQR(x, na.rm = TRUE)), na.action = na.pass)
s <- do.call(data.frame, s)
s[order(-s$Ozone.median), ]
